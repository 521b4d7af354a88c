#include "LocalStore/Ports/LocalStoreRequests.hpp"

#include "LocalStore/LocalStore.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/NSError.hpp"

#include <functional>
#include <mutex>
#include <utility>

namespace corvantile {

namespace {

// An answer that is given once, or let go of before.
class Answer {
public:
    explicit Answer(std::function<void()> give) : give_(std::move(give)) {}
    [[nodiscard]] std::function<void()> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(give_, nullptr);
    }

private:
    std::mutex mutex_;
    std::function<void()> give_;
};

// The queue holds the answer: an answer that keeps its own request is then no cycle that lasts.
class Request final : public PlatformRequest {
public:
    explicit Request(std::weak_ptr<Answer> answer) : answer_(std::move(answer)) {}
    ~Request() override {
        if (const auto answer = answer_.lock()) static_cast<void>(answer->take());
    }

private:
    const std::weak_ptr<Answer> answer_;
};

std::shared_ptr<PlatformRequest> begin(DispatchQueue& queue, std::function<void()> give) {
    const auto answer = std::make_shared<Answer>(std::move(give));
    auto request = std::make_shared<Request>(answer);
    queue.async([answer] {
        if (const auto taken = answer->take()) taken();
    });
    return request;
}

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
    return begin(*queue, [store = store_, identifiers, completion = std::move(completion)] {
        complete([&] { return store->products(identifiers); }, completion);
    });
}

std::shared_ptr<PlatformRequest> LocalStoreRequests::receipt(std::shared_ptr<DispatchQueue> queue,
                                                             ReceiptCompletion completion) {
    return begin(*queue, [store = store_, completion = std::move(completion)] {
        complete([&] { return store->receiptForApp(); }, completion);
    });
}

} // namespace corvantile
