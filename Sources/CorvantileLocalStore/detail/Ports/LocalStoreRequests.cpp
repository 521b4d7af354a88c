#include "CorvantileLocalStore/detail/Ports/LocalStoreRequests.hpp"

#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantileLocalStore/detail/Ports/LocalPaymentQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <utility>

namespace corvantile {

namespace {

// Calls `completion` with what `ask` answers, or with its error.
template <class Ask, class Completion>
void complete(const Ask& ask, const Completion& completion) {
    decltype(ask()) answer{};
    std::exception_ptr error;
    try {
        answer = ask();
    } catch (const NSError&) {
        error = std::current_exception();
    }
    completion(std::move(answer), error);
}

} // namespace

LocalStoreRequests::LocalStoreRequests(std::shared_ptr<LocalStore> store,
                                       std::shared_ptr<const LocalPaymentQueue> queue)
    : store_(std::move(store)), queue_(std::move(queue)) {}
LocalStoreRequests::~LocalStoreRequests() = default;

std::shared_ptr<PlatformRequest> LocalStoreRequests::products(const ProductIdentifiers& identifiers,
                                                              std::shared_ptr<DispatchQueue> queue,
                                                              ProductsCompletion completion) {
    return postAnswer(*queue, [store = store_, identifiers, completion = std::move(completion)] {
        complete([&] { return store->products(identifiers); }, completion);
    });
}

std::shared_ptr<PlatformRequest> LocalStoreRequests::receipt(std::shared_ptr<DispatchQueue> queue,
                                                             ReceiptCompletion completion) {
    std::optional<std::string> text;
    std::exception_ptr error;
    complete([&] { return store_->receiptForApp([this] { return queue_->undelivered(); }); },
             [&](std::optional<std::string> answer, const std::exception_ptr& failure) {
                 text = std::move(answer);
                 error = failure;
             });
    return postAnswer(*queue, [text = std::move(text), error, completion = std::move(completion)] {
        completion(text, error);
    });
}

} // namespace corvantile
