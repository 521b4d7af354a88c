#pragma once

#include "CorvantileLocalStore/Catalogue/Catalogue.hpp"
#include "CorvantileLocalStore/Engine/StoreRecords.hpp"
#include "CorvantileLocalStore/LocalStoreError.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace corvantile {

class Clock;
class Console;
class StoreSession;
class StoreStorage;

struct LocalStoreOptions {
    Catalogue catalogue{};
    std::exception_ptr catalogueError{}; // why there is none; product requests answer with it
    std::string bundleIdentifier{};
    std::shared_ptr<Clock> clock{};          // the device's
    std::shared_ptr<StoreStorage> storage{}; // what survives the process
    // Seconds of the store per second of the device, from this launch on; 0 stops its clock. Not set: as it
    // was, at first 1. A store that is to run backwards cannot be made: NSError (localStoreErrorDomain,
    // impossible).
    std::optional<double> clockRate{};
    // What a new store's clock shows. Not set: the device's time.
    std::optional<Date> start{};
    // Puts the opaque receipt where the bundle finds it. May be null.
    std::function<void(const std::string& bytes)> writeReceipt{};
    // Hears of what is wrong with the storage. May be null.
    std::shared_ptr<Console> console{};
};

// A store that lives like the real one, over a catalogue, on its own clock: what it sold, who subscribes, and
// what still waits in the payment queue. Docs/LocalStore.md says what it plays.
//
// The app meets it through the ports (LocalPaymentQueue, LocalStoreRequests); whoever plays the store and its
// customers calls the commands below. A command returns when what it changed would survive a kill; what
// follows for the app comes on main, later. One that cannot be done throws NSError (localStoreErrorDomain)
// and does nothing. Time is always caught up with first: renewals that fell due come before the command.
//
// Threads: any. It opens its storage when first used. Several stores live side by side.
class CORVANTILE_API LocalStore : NonCopyable {
public:
    // What a listener hears after each change. Called with the store locked: post it, and call nothing here.
    struct News {
        std::vector<StoreTransaction> updated{}; // in the queue's order
        std::vector<StoreTransaction> removed{}; // finished
        std::vector<std::int64_t> claimed{};     // of those, what this process has just added for itself
        bool isAll = false;                      // `updated` is the whole queue, just read from the storage
        bool hasPromotions = false;              // some product waits for the app's answer
    };
    using Listener = std::function<void(const News& news)>;

    explicit LocalStore(LocalStoreOptions options);
    ~LocalStore();

    // The customer's next payment for the product fails: cancelled, not allowed, not available, no network …
    void failNextPayment(const std::string& productIdentifier, SKErrorCode reason);
    // The next payment for the product waits until somebody approves or declines it.
    void deferNextPayment(const std::string& productIdentifier);
    // The next payment for the product stays purchasing until somebody approves or declines it, or the app is
    // launched anew.
    void holdNextPayment(const std::string& productIdentifier);
    // The oldest payment for the product that waits goes on, or fails as cancelled.
    void approve(const std::string& productIdentifier);
    void decline(const std::string& productIdentifier);

    // `identifier`: a purchase's, or a product's for the latest purchase of it. Refunding the period under
    // way ends a subscription.
    void refund(const std::string& identifier, bool isForIssueWithApp = false);

    // The customer buys the product elsewhere: it appears in the queue as it turns out, and was never
    // purchasing.
    void buyElsewhere(const std::string& productIdentifier, int quantity = 1);

    // The customer chooses the product in the store, outside the app. The app is asked when an observer is
    // there to answer.
    void promote(const std::string& productIdentifier);

    // The customer's subscription will renew, or ends with its period.
    void setRenews(const std::string& productIdentifier, bool renews);
    // Renewals of the product are paid, or not. Whatever is owed is collected at once when they are again.
    void setBillingFails(const std::string& productIdentifier, bool fails);

    // The next `count` times that the app asks for products or restores, that fails.
    void failRequests(int count, SKErrorCode reason);
    // Nothing of the store can be reached: payments, restoring and requests fail.
    void setOffline(bool isOffline);

    // Lets the store's time jump ahead; renewals and ends on the way happen at their own dates.
    void advance(std::chrono::duration<double> duration);
    void setClockRate(double rate);

    // What it is like now. Lists are copies.
    [[nodiscard]] const Catalogue& catalogue() const;
    [[nodiscard]] Date now();
    [[nodiscard]] std::vector<StoreTransaction> transactions();   // not finished, oldest first
    [[nodiscard]] std::vector<StorePurchase> purchases();         // ever, oldest first
    [[nodiscard]] std::vector<StoreSubscription> subscriptions(); // one a group, ended ones too
    [[nodiscard]] StoreSettings settings();
    [[nodiscard]] std::optional<std::string> receipt(); // as StoreRequests tells it

    // For the ports.
    // What the clock shows. Never throws, and only reads: what falls due waits for the next command. Before
    // the storage can be read: the device's time.
    [[nodiscard]] Date timeForApp();
    // Before anything else is called.
    void setListener(Listener listener);
    // Throws NSError when the payment could not be written down.
    std::int64_t addPayment(const std::string& productIdentifier, int quantity);
    void settle(std::int64_t number);
    void finish(std::int64_t number);
    void restore();
    [[nodiscard]] StoreRequests::Products products(const ProductIdentifiers& identifiers);
    // Without the consumables that `hidden` returns, called with the store locked: those that no observer has
    // been given yet. An app sees them from then on, until they are finished.
    [[nodiscard]] std::optional<std::string>
    receiptForApp(const std::function<std::set<std::string>()>& hidden = nullptr);
    // Hands a waiting transaction to this process, for as long as it lives. False: a living process has it.
    // The same for 0: who asks its app about promotions. What this process adds itself, it has. Threads: any,
    // also the listener's.
    [[nodiscard]] bool claim(std::int64_t number);
    void release(std::int64_t number);
    // The next product that waits for the app's answer.
    [[nodiscard]] std::optional<std::string> promotion();
    // The payment's number when the app goes on with it, or nullopt when it does not or nobody asks any more.
    std::optional<std::int64_t> answerPromotion(const std::string& productIdentifier, bool goesOn);
    // When something happens next, by the device's clock and from now.
    struct Due {
        Date deviceDate{};
        std::chrono::nanoseconds delay{};
    };
    // Lets happen what fell due. nullopt when nothing is due any more.
    std::optional<Due> catchUp();

private:
    const std::unique_ptr<StoreSession> session_;
};

} // namespace corvantile
