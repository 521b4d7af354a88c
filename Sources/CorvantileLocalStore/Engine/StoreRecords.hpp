#pragma once

#include "CorvantileLocalStore/Catalogue/Catalogue.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace corvantile {

// What a local store remembers. Dates are the store's own time.

// Why a payment or a request failed, as its NSError tells it.
struct StoreFailure {
    SKErrorCode code = SKErrorCode::unknown;
    std::string message{};

    friend bool operator==(const StoreFailure&, const StoreFailure&) = default;
};

// Something that was sold: one period of a subscription is one purchase.
struct StorePurchase {
    std::string identifier{};         // of its transaction; later ones are larger
    std::string originalIdentifier{}; // of the first purchase of the subscription, else its own
    std::string lineItemIdentifier{};
    std::string productIdentifier{};
    std::string groupIdentifier{}; // empty unless it renews
    ProductKind kind = ProductKind::consumable;
    int quantity = 1;
    NSDecimalNumber price{}; // of one piece
    Date date{};
    Date originalDate{};
    std::optional<Date> expirationDate{};
    bool isTrial = false;        // free
    bool isIntroductory = false; // paid, at an introductory price
    bool isFinished = false;
    std::optional<Date> refundDate{};
    bool isRefundedForIssue = false; // with the app, as the customer says

    friend bool operator==(const StorePurchase&, const StorePurchase&) = default;
};

// A payment on its way through the queue. What is finished is forgotten.
struct StoreTransaction {
    std::int64_t number = 0; // its place in the queue; never used twice
    std::string productIdentifier{};
    int quantity = 1;
    SKPaymentTransactionState state = SKPaymentTransactionState::purchasing;
    std::optional<std::string> identifier{}; // once purchased or restored
    std::optional<std::string>
        originalIdentifier{}; // the purchase that it stands for, unless that is its own
    std::optional<Date> date{};
    std::optional<StoreFailure> failure{}; // once failed

    friend bool operator==(const StoreTransaction&, const StoreTransaction&) = default;
};

enum class SubscriptionStatus {
    active,
    gracePeriod,  // the period is over and not paid for, yet the app still serves the customer
    billingRetry, // the same, and it does not
    expired,
    revoked, // refunded
};

// Why a subscription ended, in the receipt's numbers.
enum class ExpirationIntent : int { cancelled = 1, billingError = 2, productNotAvailable = 4 };

// What one customer has of one subscription group.
struct StoreSubscription {
    std::string groupIdentifier{};
    std::string productIdentifier{};
    std::string originalIdentifier{};
    Date originalDate{};
    std::string purchaseIdentifier{}; // of the latest period
    SubscriptionStatus status = SubscriptionStatus::active;
    bool renews = true;
    bool hasUsedOffer = false; // one introductory offer a group
    int offerPeriodsLeft = 0;
    bool isInOffer = false;
    // The latest period is the `periodsPassed`th since `anchor`, from which days of the month are counted.
    Date anchor{};
    int periodsPassed = 0;
    Date expirationDate{};
    std::optional<Date> gracePeriodEnd{};
    std::optional<ExpirationIntent> expirationIntent{};

    friend bool operator==(const StoreSubscription&, const StoreSubscription&) = default;
};

// What becomes of a payment that somebody has decided beforehand.
enum class PaymentDecision {
    fails,
    isDeferred, // somebody else has to approve it
    isHeld,     // the customer takes their time: it stays purchasing
};

struct NextPayment {
    PaymentDecision decision = PaymentDecision::fails;
    std::optional<StoreFailure> failure{}; // where it fails

    friend bool operator==(const NextPayment&, const NextPayment&) = default;
};

// What whoever plays the store has asked for, and the store's counters.
struct StoreSettings {
    std::int64_t nextNumber = 1;
    std::int64_t nextIdentifier = 200000000000001;
    std::map<std::string, NextPayment> nextPayments{}; // by product
    std::set<std::string> failingBilling{};            // products whose renewals nobody pays
    std::deque<std::string> promotions{}; // products chosen in the store that no app has been asked about
    int failingRequests = 0;
    StoreFailure requestFailure{};
    bool isOffline = false;

    friend bool operator==(const StoreSettings&, const StoreSettings&) = default;
};

// How the store's time follows the device's.
struct StoreClockSetting {
    Date device{};
    Date store{}; // when the device's clock showed `device`
    double rate = 1;
    Date seen{}; // no later time was ever told

    friend bool operator==(const StoreClockSetting&, const StoreClockSetting&) = default;
};

} // namespace corvantile
