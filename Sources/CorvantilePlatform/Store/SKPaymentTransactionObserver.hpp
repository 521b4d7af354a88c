#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <exception>
#include <memory>
#include <vector>

namespace corvantile {

class SKPayment;
class SKPaymentQueue;
class SKPaymentTransaction;
class SKProduct;

// The callbacks of a payment queue to its observers. Every callback has a harmless default. Threads: main.
class CORVANTILE_API SKPaymentTransactionObserver : NonCopyable {
public:
    using Transactions = std::vector<std::shared_ptr<SKPaymentTransaction>>;

    virtual ~SKPaymentTransactionObserver();

    virtual void updatedTransactions(SKPaymentQueue& queue, const Transactions& transactions);
    virtual void removedTransactions(SKPaymentQueue& queue, const Transactions& transactions);
    virtual void restoreCompletedTransactionsFinished(SKPaymentQueue& queue);
    virtual void restoreCompletedTransactionsFailedWithError(SKPaymentQueue& queue,
                                                             const std::exception_ptr& error);
    // A purchase begun in the store. True: the queue continues it at once.
    virtual bool shouldAddStorePayment(SKPaymentQueue& queue, const std::shared_ptr<SKPayment>& payment,
                                       const std::shared_ptr<SKProduct>& product);
};

} // namespace corvantile
