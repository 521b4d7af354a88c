#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"

#include <exception>
#include <functional>
#include <memory>

namespace corvantile {

class DispatchQueue;

// What every implementation of a payment queue shares: the observers, and the way of news to them on main.
//
// A derived queue keeps the transactions. It changes them and posts the news under one lock of its own, and
// posts the very objects that `transactions` answers: an observer that arrives meanwhile then hears of each
// exactly once, as something that waited for it or in a batch. Observers that arrive in one turn of the main
// queue are given what waited as one snapshot. Held by shared_ptr. Threads: any.
class CORVANTILE_API ObservedPaymentQueue : public SKPaymentQueue,
                                            public std::enable_shared_from_this<ObservedPaymentQueue> {
public:
    ~ObservedPaymentQueue() override;

    [[nodiscard]] std::unique_ptr<PaymentObserverRegistration>
    addTransactionObserver(SKPaymentTransactionObserver& observer) final;

protected:
    explicit ObservedPaymentQueue(std::shared_ptr<DispatchQueue> mainQueue);

    // Each reaches the observers of the moment of its delivery, in the order of the calls.
    // An empty batch is none.
    void postUpdated(Transactions batch);
    // Transactions removed one after the other, with no update between, become one batch.
    void postRemoved(std::shared_ptr<SKPaymentTransaction> transaction);
    void postRestoreFinished();
    void postRestoreFailed(std::exception_ptr error);
    // Asks all observers. `answered` then hears, on main, whether any said yes.
    void postStorePayment(std::shared_ptr<SKPayment> payment, std::shared_ptr<SKProduct> product,
                          std::function<void(bool isWanted)> answered);

    // What waits for observers that arrive now; `transactions`, unless some of it is not for this process.
    [[nodiscard]] virtual Transactions takeWaiting();

    // Called on main, without a lock, right before a batch goes to the observers.
    virtual void willDeliver(const Transactions& batch);

    [[nodiscard]] bool hasObservers() const;

private:
    class Place;
    class Registration;
    struct Observers;

    template <class Item>
    void post(Item item);
    void deliverUpdated();
    void welcome();

    const std::shared_ptr<DispatchQueue> mainQueue_;
    const std::shared_ptr<Observers> observers_;
};

} // namespace corvantile
