#pragma once

#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"

#include <memory>

namespace corvantile::tool {

class Reporter;

// Reports every callback of the payment queue. Finishes no transaction and defers no store payment. Register
// it before the app's plug-ins: a batch is then reported before they act on it.
class PaymentQueueWatch final : public SKPaymentTransactionObserver {
public:
    // Of the installed platform's queue. Borrows the reporter.
    explicit PaymentQueueWatch(Reporter& reporter);
    ~PaymentQueueWatch() override;

    void updatedTransactions(SKPaymentQueue& queue, const Transactions& transactions) override;
    void restoreCompletedTransactionsFinished(SKPaymentQueue& queue) override;
    void restoreCompletedTransactionsFailedWithError(SKPaymentQueue& queue,
                                                     const std::exception_ptr& error) override;
    void removedTransactions(SKPaymentQueue& queue, const Transactions& transactions) override;
    bool shouldAddStorePayment(SKPaymentQueue& queue, const std::shared_ptr<SKPayment>& payment,
                               const std::shared_ptr<SKProduct>& product) override;

private:
    Reporter& reporter_;
    const std::unique_ptr<PaymentObserverRegistration> registration_; // last: see there
};

} // namespace corvantile::tool
