#include "CorvantileLocalStore/detail/Ports/LocalStoreRequests.hpp"

#include "CorvantileLocalStore/LocalStore.hpp"
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

LocalStoreRequests::LocalStoreRequests(std::shared_ptr<LocalStore> store) : store_(std::move(store)) {}
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
    return postAnswer(*queue, [store = store_, completion = std::move(completion)] {
        complete([&] { return store->receiptForApp(); }, completion);
    });
}

} // namespace corvantile
