#include "CorvantilePlatform/Store/ObservedPaymentQueue.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <algorithm>
#include <deque>
#include <mutex>
#include <unordered_set>
#include <utility>
#include <vector>

namespace corvantile {

// One observer's place in the list.
class ObservedPaymentQueue::Place {
public:
    explicit Place(SKPaymentTransactionObserver& observer) : observer_(&observer) {}

    template <class Call>
    void call(const Call& call) {
        const std::lock_guard lock(mutex_);
        if (observer_ != nullptr) call(*observer_);
    }

    void end() {
        const std::lock_guard lock(mutex_);
        observer_ = nullptr;
    }

    bool hasArrived = false; // has been given what waited for it; main's alone

private:
    std::recursive_mutex mutex_; // held while the observer is called, which may end inside
    SKPaymentTransactionObserver* observer_;
};

struct ObservedPaymentQueue::Observers {
    using Places = std::vector<std::shared_ptr<Place>>;

    std::mutex mutex;
    Places places;
    bool isWelcomePosted = false;
    std::deque<std::shared_ptr<const Transactions>> updates; // posted, in order
    std::shared_ptr<Transactions> removals;                  // posted, and still open for more

    Places all() {
        const std::lock_guard lock(mutex);
        return places;
    }

    Places arrived() {
        auto chosen = all();
        const auto isNew = [](const auto& place) { return !place->hasArrived; };
        chosen.erase(std::remove_if(chosen.begin(), chosen.end(), isNew), chosen.end());
        return chosen;
    }

    // The observers that wait for their welcome; from now on they get every update.
    Places takeArrivals() {
        isWelcomePosted = false;
        Places arrivals;
        for (const auto& place : places)
            if (!std::exchange(place->hasArrived, true)) arrivals.push_back(place);
        return arrivals;
    }

    // What comes in a batch of its own is no part of a welcome.
    void leaveOutPosted(Transactions& transactions) const {
        std::unordered_set<const SKPaymentTransaction*> posted;
        for (const auto& batch : updates)
            for (const auto& transaction : *batch) posted.insert(transaction.get());
        const auto isPosted = [&](const auto& transaction) { return posted.count(transaction.get()) > 0; };
        transactions.erase(std::remove_if(transactions.begin(), transactions.end(), isPosted),
                           transactions.end());
    }
};

class ObservedPaymentQueue::Registration final : public PaymentObserverRegistration {
public:
    Registration(std::shared_ptr<Observers> observers, std::shared_ptr<Place> place)
        : observers_(std::move(observers)), place_(std::move(place)) {}

    ~Registration() override {
        place_->end();
        const std::lock_guard lock(observers_->mutex);
        auto& places = observers_->places;
        places.erase(std::remove(places.begin(), places.end(), place_), places.end());
    }

private:
    const std::shared_ptr<Observers> observers_;
    const std::shared_ptr<Place> place_;
};

ObservedPaymentQueue::ObservedPaymentQueue(std::shared_ptr<DispatchQueue> mainQueue)
    : mainQueue_(std::move(mainQueue)), observers_(std::make_shared<Observers>()) {}

ObservedPaymentQueue::~ObservedPaymentQueue() = default;

template <class Item>
void ObservedPaymentQueue::post(Item item) {
    mainQueue_->async([self = shared_from_this(), run = std::move(item)] { run(*self); });
}

std::unique_ptr<PaymentObserverRegistration>
ObservedPaymentQueue::addTransactionObserver(SKPaymentTransactionObserver& observer) {
    auto place = std::make_shared<Place>(observer);
    const std::lock_guard lock(observers_->mutex);
    observers_->places.push_back(place);
    if (!std::exchange(observers_->isWelcomePosted, true))
        post([](ObservedPaymentQueue& self) { self.welcome(); });
    return std::make_unique<Registration>(observers_, std::move(place));
}

// The transactions first, then what is posted: a change in between is known as posted at least.
void ObservedPaymentQueue::welcome() {
    auto waiting = takeWaiting();
    std::unique_lock lock(observers_->mutex);
    observers_->leaveOutPosted(waiting);
    const auto arrivals = observers_->takeArrivals();
    lock.unlock();
    if (waiting.empty()) return;
    willDeliver(waiting);
    for (const auto& place : arrivals)
        place->call([&](auto& observer) { observer.updatedTransactions(*this, waiting); });
}

void ObservedPaymentQueue::postUpdated(Transactions batch) {
    if (batch.empty()) return;
    auto shared = std::make_shared<const Transactions>(std::move(batch));
    const std::lock_guard lock(observers_->mutex);
    observers_->removals.reset();
    observers_->updates.push_back(std::move(shared));
    post([](ObservedPaymentQueue& self) { self.deliverUpdated(); });
}

// An observer that has not arrived yet is skipped: its welcome includes this batch.
void ObservedPaymentQueue::deliverUpdated() {
    std::unique_lock lock(observers_->mutex);
    const auto batch = std::move(observers_->updates.front());
    observers_->updates.pop_front();
    lock.unlock();
    const auto arrived = observers_->arrived();
    if (!arrived.empty()) willDeliver(*batch);
    for (const auto& place : arrived)
        place->call([&](auto& observer) { observer.updatedTransactions(*this, *batch); });
}

void ObservedPaymentQueue::postRemoved(std::shared_ptr<SKPaymentTransaction> transaction) {
    const std::lock_guard lock(observers_->mutex);
    if (observers_->removals) return observers_->removals->push_back(std::move(transaction));
    const auto batch = std::make_shared<Transactions>(1, std::move(transaction));
    observers_->removals = batch;
    post([batch](ObservedPaymentQueue& self) {
        std::unique_lock closing(self.observers_->mutex);
        if (self.observers_->removals == batch) self.observers_->removals.reset();
        closing.unlock();
        for (const auto& place : self.observers_->arrived())
            place->call([&](auto& observer) { observer.removedTransactions(self, *batch); });
    });
}

void ObservedPaymentQueue::postRestoreFinished() {
    post([](ObservedPaymentQueue& self) {
        for (const auto& place : self.observers_->all())
            place->call([&](auto& observer) { observer.restoreCompletedTransactionsFinished(self); });
    });
}

void ObservedPaymentQueue::postRestoreFailed(std::exception_ptr error) {
    post([error = std::move(error)](ObservedPaymentQueue& self) {
        for (const auto& place : self.observers_->all())
            place->call(
                [&](auto& observer) { observer.restoreCompletedTransactionsFailedWithError(self, error); });
    });
}

void ObservedPaymentQueue::postStorePayment(std::shared_ptr<SKPayment> payment,
                                            std::shared_ptr<SKProduct> product,
                                            std::function<void(bool isWanted)> answered) {
    post([payment = std::move(payment), product = std::move(product),
          answered = std::move(answered)](ObservedPaymentQueue& self) {
        bool isWanted = false;
        for (const auto& place : self.observers_->all())
            place->call(
                [&](auto& observer) { isWanted |= observer.shouldAddStorePayment(self, payment, product); });
        answered(isWanted);
    });
}

ObservedPaymentQueue::Transactions ObservedPaymentQueue::takeWaiting() { return transactions(); }

void ObservedPaymentQueue::willDeliver(const Transactions&) {}

bool ObservedPaymentQueue::hasObservers() const {
    const std::lock_guard lock(observers_->mutex);
    return !observers_->places.empty();
}

} // namespace corvantile
