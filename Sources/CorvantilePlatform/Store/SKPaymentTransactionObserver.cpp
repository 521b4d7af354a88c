#include "CorvantilePlatform/Store/SKPaymentTransactionObserver.hpp"

namespace corvantile {

SKPaymentTransactionObserver::~SKPaymentTransactionObserver() = default;

void SKPaymentTransactionObserver::updatedTransactions(SKPaymentQueue&, const Transactions&) {}
void SKPaymentTransactionObserver::removedTransactions(SKPaymentQueue&, const Transactions&) {}
void SKPaymentTransactionObserver::restoreCompletedTransactionsFinished(SKPaymentQueue&) {}
void SKPaymentTransactionObserver::restoreCompletedTransactionsFailedWithError(SKPaymentQueue&,
                                                                               const std::exception_ptr&) {}
bool SKPaymentTransactionObserver::shouldAddStorePayment(SKPaymentQueue&, const std::shared_ptr<SKPayment>&,
                                                         const std::shared_ptr<SKProduct>&) {
    return false;
}

} // namespace corvantile
