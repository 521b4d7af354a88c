#include "CorvantileLocalStore/detail/Ports/LocalPaymentQueue.hpp"

#include "CorvantileLocalStore/Engine/detail/StoreFailures.hpp"
#include "CorvantileLocalStore/detail/Ports/DueTimer.hpp"
#include "CorvantileLocalStore/detail/Ports/QueuedTransactions.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <chrono>
#include <mutex>
#include <utility>

namespace corvantile {

namespace {

using State = SKPaymentTransactionState;

// How often a process looks whether the one is gone that has what it would deliver.
constexpr std::chrono::seconds otherProcesses{1};

constexpr std::int64_t promotions = 0; // the claim of who asks about them

} // namespace

struct LocalPaymentQueue::Parts {
    const std::shared_ptr<LocalStore> store;
    const std::shared_ptr<DispatchQueue> mainQueue;
    const std::shared_ptr<Console> console;

    DueTimer timer{mainQueue};

    // Taken after the store's own lock, never before: nothing calls the store while it is held.
    std::mutex mutex{};
    QueuedTransactions queued{};
    std::string complaint{}; // the last one, which is not repeated
    bool hasBegun = false;
    bool hasPromotions = false;
    bool isAsking = false;
    bool isTimeKeeperPosted = false;
    bool isReceiving = false; // its observers have been given what waited, or are about to
    bool isWatchingOthers = false;
};

std::shared_ptr<LocalPaymentQueue> LocalPaymentQueue::make(std::shared_ptr<LocalStore> store,
                                                           std::shared_ptr<DispatchQueue> mainQueue,
                                                           std::shared_ptr<Console> console) {
    auto parts = std::unique_ptr<Parts>(new Parts{std::move(store), mainQueue, std::move(console)});
    auto& told = *parts->store;
    const std::shared_ptr<LocalPaymentQueue> queue(
        new LocalPaymentQueue(std::move(mainQueue), std::move(parts)));
    told.setListener([weak = std::weak_ptr(queue)](const LocalStore::News& news) {
        if (const auto self = weak.lock()) self->hear(news);
    });
    return queue;
}

LocalPaymentQueue::LocalPaymentQueue(std::shared_ptr<DispatchQueue> mainQueue, std::unique_ptr<Parts> parts)
    : ObservedPaymentQueue(std::move(mainQueue)), parts_(std::move(parts)) {}

LocalPaymentQueue::~LocalPaymentQueue() = default;

// Runs `act` on main, unless the queue is gone by then.
template <class Act>
void LocalPaymentQueue::post(Act act) const {
    parts_->mainQueue->async([weak = weak_from_this(), act = std::move(act)] {
        if (const auto self = std::const_pointer_cast<ObservedPaymentQueue>(weak.lock()))
            act(static_cast<LocalPaymentQueue&>(*self));
    });
}

// False when the store could not do it, which a person must put right.
template <class Act>
bool LocalPaymentQueue::attempt(Act act) const {
    try {
        act();
        return true;
    } catch (const NSError& error) {
        complain(error.localizedDescription());
        return false;
    }
}

void LocalPaymentQueue::complain(const std::string& reason) const {
    std::unique_lock lock(parts_->mutex);
    const auto before = std::exchange(parts_->complaint, reason);
    lock.unlock();
    if (parts_->console && before != reason) parts_->console->print("The store fails: " + reason);
}

// With the mutex held: what no other process has is this one's from now on, and what was cut off there goes
// on here. Returns what is new to it.
template <class Concerns>
std::set<std::int64_t> LocalPaymentQueue::claimWaiting(Concerns isConcerned) {
    auto& parts = *parts_;
    auto fresh = parts.queued.claimAll(
        [&](std::int64_t number) { return isConcerned(number) && parts.store->claim(number); });
    for (const auto number : parts.queued.purchasing(fresh)) settleLater(number);
    if (!parts.queued.areAllOurs()) watchOthers();
    return fresh;
}

// With the mutex held.
void LocalPaymentQueue::watchOthers() {
    if (std::exchange(parts_->isWatchingOthers, true)) return;
    parts_->mainQueue->asyncAfter(otherProcesses, [weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<LocalPaymentQueue>(weak.lock());
        if (!self) return;
        {
            const std::lock_guard lock(self->parts_->mutex);
            self->parts_->isWatchingOthers = false;
        }
        static_cast<void>(self->takeWaiting());
    });
}

void LocalPaymentQueue::hear(const LocalStore::News& news) {
    auto& parts = *parts_;
    const std::lock_guard lock(parts.mutex);
    const bool isBeginning = !std::exchange(parts.hasBegun, true);
    auto difference = parts.queued.take(news);
    parts.hasPromotions = news.hasPromotions;
    for (const auto number : difference.removedNumbers) parts.store->release(number);
    if (isBeginning) {
        // What was cut off goes on; what waited is delivered to whoever arrives.
        const auto open = parts.queued.purchasing(difference.updated);
        const auto cutOff = parts.queued.claimAll(
            [&](std::int64_t number) { return open.contains(number) && parts.store->claim(number); });
        for (const auto number : cutOff) settleLater(number);
    } else {
        // What waited before is for the welcome of the first observer.
        const auto isConcerned = [&](std::int64_t number) {
            return parts.isReceiving || difference.updated.contains(number);
        };
        if (hasObservers()) difference.updated.merge(claimWaiting(isConcerned));
        if (hasObservers()) postUpdated(parts.queued.ours(difference.updated));
        for (auto& transaction : difference.removed) postRemoved(std::move(transaction));
    }
    if (parts.hasPromotions) post([](LocalPaymentQueue& self) { self.askAboutPromotion(); });
    if (!std::exchange(parts.isTimeKeeperPosted, true))
        post([](LocalPaymentQueue& self) { self.keepTime(); });
}

void LocalPaymentQueue::addPayment(std::shared_ptr<const SKPayment> payment) {
    std::int64_t number = 0;
    const bool isWritten = attempt(
        [&] { number = parts_->store->addPayment(payment->productIdentifier(), payment->quantity()); });
    if (isWritten)
        settleLater(number);
    else
        failUnwritten(std::move(payment));
}

void LocalPaymentQueue::failUnwritten(std::shared_ptr<const SKPayment> payment) {
    SKPaymentTransaction::Facts facts{.payment = std::move(payment), .state = State::failed};
    facts.error = std::make_exception_ptr(storeError(storeFailure(SKErrorCode::unknown)));
    const std::lock_guard lock(parts_->mutex);
    postUpdated({parts_->queued.addUnwritten(std::move(facts))});
}

void LocalPaymentQueue::settleLater(std::int64_t number) {
    post([number](LocalPaymentQueue& self) { self.attempt([&] { self.parts_->store->settle(number); }); });
}

void LocalPaymentQueue::restoreCompletedTransactions() {
    try {
        parts_->store->restore();
        postRestoreFinished();
    } catch (const NSError&) {
        postRestoreFailed(std::current_exception());
    }
}

void LocalPaymentQueue::finishTransaction(const SKPaymentTransaction& transaction) {
    if (transaction.transactionState() == State::purchasing)
        throw storeError(
            {SKErrorCode::clientInvalid, "A transaction that is still purchasing cannot be finished."});
    if (transaction.transactionState() == State::deferred) return;
    begin();
    std::unique_lock lock(parts_->mutex);
    const auto number = parts_->queued.number(transaction);
    if (!number) return;
    if (QueuedTransactions::isUnwritten(*number)) return postRemoved(parts_->queued.remove(*number));
    lock.unlock();
    attempt([&] { parts_->store->finish(*number); });
}

// The store has told what waits, which it does when it is first asked for anything.
void LocalPaymentQueue::begin() const {
    {
        const std::lock_guard lock(parts_->mutex);
        if (parts_->hasBegun) return;
    }
    attempt([&] { parts_->store->catchUp(); });
}

LocalPaymentQueue::Transactions LocalPaymentQueue::transactions() const {
    attempt([&] { parts_->store->catchUp(); });
    const std::lock_guard lock(parts_->mutex);
    return parts_->isReceiving && hasObservers() ? parts_->queued.ours() : parts_->queued.all();
}

LocalPaymentQueue::Transactions LocalPaymentQueue::takeWaiting() {
    attempt([&] { parts_->store->catchUp(); });
    const std::lock_guard lock(parts_->mutex);
    // Somebody may have arrived who can answer.
    if (parts_->hasPromotions) post([](LocalPaymentQueue& self) { self.askAboutPromotion(); });
    if (!hasObservers()) return {};
    const auto fresh = claimWaiting([](std::int64_t) { return true; });
    // Those who are here already get it as a batch, and who arrives now gets that batch too.
    if (std::exchange(parts_->isReceiving, true)) postUpdated(parts_->queued.ours(fresh));
    return parts_->queued.ours();
}

std::set<std::string> LocalPaymentQueue::undelivered() const {
    const std::lock_guard lock(parts_->mutex);
    return hasObservers() ? parts_->queued.undelivered() : std::set<std::string>();
}

void LocalPaymentQueue::willDeliver(const Transactions& batch) {
    const std::lock_guard lock(parts_->mutex);
    parts_->queued.noteDelivered(batch);
}

// Lets happen what is due, and wakes up for what comes next.
void LocalPaymentQueue::keepTime() {
    {
        const std::lock_guard lock(parts_->mutex);
        parts_->isTimeKeeperPosted = false;
    }
    std::optional<LocalStore::Due> due;
    attempt([&] { due = parts_->store->catchUp(); });
    if (!due) return;
    parts_->timer.await(*due, [weak = weak_from_this()] {
        if (const auto self = std::static_pointer_cast<LocalPaymentQueue>(weak.lock())) self->keepTime();
    });
}

// One at a time, and only while there is somebody to ask.
void LocalPaymentQueue::askAboutPromotion() {
    std::optional<std::string> chosen;
    if (!hasObservers() || !attempt([&] { chosen = parts_->store->promotion(); }) || !chosen) return;
    const std::lock_guard lock(parts_->mutex);
    if (!parts_->store->claim(promotions)) return watchOthers();
    if (std::exchange(parts_->isAsking, true)) return;
    const auto& catalogue = parts_->store->catalogue();
    const auto* const product = catalogue.product(*chosen);
    const auto answer = [weak = weak_from_this(), name = *chosen](bool isWanted) {
        if (const auto self = std::static_pointer_cast<LocalPaymentQueue>(weak.lock()))
            self->answerPromotion(name, isWanted);
    };
    if (product == nullptr) return post([answer](LocalPaymentQueue&) { answer(false); }); // no longer sold
    postStorePayment(std::make_shared<SKPayment>(*chosen), makeProduct(catalogue, *product), answer);
}

void LocalPaymentQueue::answerPromotion(const std::string& productIdentifier, bool isWanted) {
    {
        const std::lock_guard lock(parts_->mutex);
        parts_->isAsking = false;
    }
    std::optional<std::int64_t> number;
    attempt([&] { number = parts_->store->answerPromotion(productIdentifier, isWanted); });
    if (number) settleLater(*number);
}

} // namespace corvantile
