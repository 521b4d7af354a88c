#include "CorvantileDesktop/detail/DesktopParts.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Store/ObservedPaymentQueue.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"

#include <algorithm>
#include <mutex>
#include <utility>

namespace corvantile {

namespace {

std::exception_ptr noStore(SKErrorCode code) {
    return std::make_exception_ptr(
        NSError(storeErrorDomain, static_cast<int>(code),
                {{NSError::localizedDescriptionKey,
                  "There is no store: the desktop platform was built with CORVANTILE_DESKTOP_STORE off."}}));
}

// Every payment fails at once. Its transaction waits until it is finished, as any other does.
class LeftOutPaymentQueue final : public ObservedPaymentQueue {
public:
    explicit LeftOutPaymentQueue(std::shared_ptr<DispatchQueue> mainQueue)
        : ObservedPaymentQueue(std::move(mainQueue)) {}

    void addPayment(std::shared_ptr<const SKPayment> payment) override {
        const auto failed = std::make_shared<SKPaymentTransaction>(
            SKPaymentTransaction::Facts{.payment = std::move(payment),
                                        .state = SKPaymentTransactionState::failed,
                                        .error = noStore(SKErrorCode::storeProductNotAvailable)});
        const std::lock_guard lock(mutex_);
        unfinished_.push_back(failed);
        postUpdated({failed});
    }

    void restoreCompletedTransactions() override { postRestoreFailed(noStore(SKErrorCode::unknown)); }

    void finishTransaction(const SKPaymentTransaction& transaction) override {
        const std::lock_guard lock(mutex_);
        const auto found = std::find_if(unfinished_.begin(), unfinished_.end(),
                                        [&](const auto& waiting) { return waiting.get() == &transaction; });
        if (found == unfinished_.end()) return;
        postRemoved(*found);
        unfinished_.erase(found);
    }

    [[nodiscard]] Transactions transactions() const override {
        const std::lock_guard lock(mutex_);
        return unfinished_;
    }

private:
    mutable std::mutex mutex_;
    Transactions unfinished_;
};

class LeftOutRequests final : public StoreRequests {
public:
    [[nodiscard]] std::shared_ptr<PlatformRequest> products(const ProductIdentifiers&,
                                                            std::shared_ptr<DispatchQueue> queue,
                                                            ProductsCompletion completion) override {
        return postAnswer(
            *queue, [completion = std::move(completion)] { completion({}, noStore(SKErrorCode::unknown)); });
    }
    [[nodiscard]] std::shared_ptr<PlatformRequest> receipt(std::shared_ptr<DispatchQueue> queue,
                                                           ReceiptCompletion completion) override {
        return postAnswer(*queue, [completion = std::move(completion)] {
            completion(std::nullopt, noStore(SKErrorCode::unknown));
        });
    }
};

} // namespace

void DesktopPlatform::Parts::addStore(Ports& made, const DesktopOptions&) {
    made.paymentQueue = std::make_shared<LeftOutPaymentQueue>(made.queues->main());
    made.storeRequests = std::make_shared<LeftOutRequests>();
}

} // namespace corvantile
