#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransactionObserver.hpp"

#include <memory>

namespace corvantile {

// One observer's place in a queue. Its end, which waits for a delivery to that observer on another thread,
// takes the place away. An observer keeps it as the last member of its final class, so that nothing is
// delivered to an object that is half gone.
class CORVANTILE_API PaymentObserverRegistration : NonCopyable {
public:
    virtual ~PaymentObserverRegistration();
};

// The store's list of pending payments.
//
// Observers hear of changes on main, never inside a call, one batch at a time, in order; one batch is the
// same snapshot for all, in the order in which they registered. What is not finished is delivered again to an
// observer that arrives, and to all after a relaunch.
// Threads: any, but for what is said of a call.
class CORVANTILE_API SKPaymentQueue : NonCopyable {
public:
    using Transactions = SKPaymentTransactionObserver::Transactions;

    virtual ~SKPaymentQueue();

    // The queue of the installed platform.
    [[nodiscard]] static std::shared_ptr<SKPaymentQueue> defaultQueue();

    // Never null. The observer is not kept alive: it lives at least as long as its registration.
    [[nodiscard]] virtual std::unique_ptr<PaymentObserverRegistration>
    addTransactionObserver(SKPaymentTransactionObserver& observer) = 0;

    // What comes of it, a refusal included, comes as a transaction.
    virtual void addPayment(std::shared_ptr<const SKPayment> payment) = 0;

    // Delivers what was bought before once more as restored transactions, then tells that it is done, or why
    // not.
    virtual void restoreCompletedTransactions() = 0;

    // Ends the delivery of the transaction, for good. One that is finished already stays so, quietly. Throws
    // NSError (storeErrorDomain, clientInvalid) for one that is still purchasing.
    virtual void finishTransaction(const SKPaymentTransaction& transaction) = 0;

    // What is not finished, oldest first.
    [[nodiscard]] virtual Transactions transactions() const = 0;
};

} // namespace corvantile
