#pragma once

#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantilePlay/detail/Kinds/Follower.hpp"

#include <memory>

namespace corvantile::tool {

void followProductRequestPlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag);
void followProductPromoPlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag);
void followConsumablePlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag);
// The problems of reading a receipt too, when there are any.
void followReceiptPlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag);

// Makes an event of everything that the payment queue tells its observers; finishes nothing, and wants no
// purchase that is begun in the store. Made before the app's plug-ins it tells of a batch before they act.
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
