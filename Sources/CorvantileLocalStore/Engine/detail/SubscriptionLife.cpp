#include "CorvantileLocalStore/Engine/detail/SubscriptionLife.hpp"

#include "CorvantileLocalStore/Catalogue/Period.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreClock.hpp"
#include "CorvantileLocalStore/LocalStoreError.hpp"

#include <chrono>
#include <functional>
#include <optional>
#include <queue>
#include <utility>
#include <vector>

namespace corvantile {

namespace {

using Days = std::chrono::duration<int, std::ratio<86400>>;

constexpr Days billingRetry{60};
constexpr Days gracePeriod{16};
constexpr Days shortGracePeriod{6}; // of a subscription by the week

// How long a customer who has not paid keeps what a subscription with such a period gives.
Days graceOf(Period period) { return roughDays(period) <= 7 ? shortGracePeriod : gracePeriod; }

// Its period is over, and not paid.
bool isOwed(const StoreSubscription& subscription) {
    return subscription.status == SubscriptionStatus::gracePeriod ||
           subscription.status == SubscriptionStatus::billingRetry;
}

bool hasEnded(const StoreSubscription& subscription) {
    return subscription.status == SubscriptionStatus::expired ||
           subscription.status == SubscriptionStatus::revoked;
}

std::optional<Date> nextChange(const StoreSubscription& subscription) {
    switch (subscription.status) {
    case SubscriptionStatus::active: return subscription.expirationDate;
    case SubscriptionStatus::gracePeriod: return subscription.gracePeriodEnd;
    case SubscriptionStatus::billingRetry: return subscription.expirationDate + billingRetry;
    case SubscriptionStatus::expired:
    case SubscriptionStatus::revoked: break;
    }
    return std::nullopt;
}

// When its status changes next if the customer does nothing, by the store's clock, which shows whole
// milliseconds. The calendar's arithmetic may leave a little more.
std::optional<Date> dueDate(const StoreSubscription& subscription) {
    const auto change = nextChange(subscription);
    return change ? std::optional(wholeMilliseconds(*change)) : std::nullopt;
}

void expire(StoreSubscription& subscription, ExpirationIntent intent) {
    subscription.status = SubscriptionStatus::expired;
    subscription.expirationIntent = intent;
    subscription.gracePeriodEnd.reset();
    subscription.renews = false;
}

} // namespace

std::optional<std::string> SubscriptionLife::obstacle(const CatalogueProduct& product) const {
    const auto found = ledger_.subscriptions().find(product.groupIdentifier);
    if (found == ledger_.subscriptions().end() || hasEnded(found->second)) return std::nullopt;
    if (found->second.productIdentifier == product.identifier)
        return "The customer is subscribed to " + product.identifier + " already.";
    return "The customer is subscribed to " + found->second.productIdentifier +
           " in the same group. This store does not play a move from one to the other.";
}

StorePurchase SubscriptionLife::begin(const CatalogueProduct& product, Date now) {
    StoreSubscription subscription{.groupIdentifier = product.groupIdentifier, .originalDate = now};
    const auto former = ledger_.subscriptions().find(product.groupIdentifier);
    if (former != ledger_.subscriptions().end()) {
        // A customer who comes back keeps the first purchase, and has had the introductory offer.
        subscription.originalIdentifier = former->second.originalIdentifier;
        subscription.originalDate = former->second.originalDate;
        subscription.hasUsedOffer = former->second.hasUsedOffer;
    }
    subscription.productIdentifier = product.identifier;
    if (product.introductoryOffer && !subscription.hasUsedOffer) {
        subscription.offerPeriodsLeft = product.introductoryOffer->numberOfPeriods;
        subscription.hasUsedOffer = true;
    }
    auto purchase = startPeriod(subscription, product, now, now);
    ledger_.put(std::move(subscription));
    return purchase;
}

StorePurchase SubscriptionLife::startPeriod(StoreSubscription& subscription, const CatalogueProduct& product,
                                            Date start, Date now) {
    const bool isOffered = subscription.offerPeriodsLeft > 0 && product.introductoryOffer;
    const auto& offer = product.introductoryOffer;
    if (subscription.periodsPassed == 0 || subscription.isInOffer != isOffered) {
        subscription.anchor = start;
        subscription.periodsPassed = 0;
    }
    const auto period = isOffered ? offer->period : product.period;
    subscription.isInOffer = isOffered;
    if (isOffered) --subscription.offerPeriodsLeft;
    subscription.status = SubscriptionStatus::active;
    subscription.gracePeriodEnd.reset();
    subscription.expirationDate = after(subscription.anchor, period, ++subscription.periodsPassed);

    StorePurchase purchase{.identifier = ledger_.makeIdentifier(),
                           .lineItemIdentifier = ledger_.makeIdentifier(),
                           .productIdentifier = product.identifier,
                           .groupIdentifier = product.groupIdentifier,
                           .kind = product.kind,
                           .price = isOffered ? offer->price : product.price,
                           .date = now,
                           .originalDate = subscription.originalDate,
                           .expirationDate = subscription.expirationDate,
                           .isTrial = isOffered && offer->mode == OfferMode::free,
                           .isIntroductory = isOffered && offer->mode != OfferMode::free};
    if (subscription.originalIdentifier.empty()) subscription.originalIdentifier = purchase.identifier;
    purchase.originalIdentifier = subscription.originalIdentifier;
    subscription.purchaseIdentifier = purchase.identifier;
    ledger_.put(purchase);
    return purchase;
}

void SubscriptionLife::deliver(const StorePurchase& purchase) {
    ledger_.put(StoreTransaction{.number = ledger_.makeNumber(),
                                 .productIdentifier = purchase.productIdentifier,
                                 .state = SKPaymentTransactionState::purchased,
                                 .identifier = purchase.identifier,
                                 .date = purchase.date});
}

void SubscriptionLife::catchUp(Date now) {
    using Due = std::pair<Date, std::string>;
    std::priority_queue<Due, std::vector<Due>, std::greater<>> dues;
    const auto expect = [&](const StoreSubscription& subscription) {
        if (const auto due = dueDate(subscription); due && *due <= now)
            dues.emplace(*due, subscription.groupIdentifier);
    };
    for (const auto& [group, subscription] : ledger_.subscriptions()) expect(subscription);
    while (!dues.empty()) {
        const auto group = dues.top().second;
        dues.pop();
        step(ledger_.subscriptions().find(group)->second);
        expect(ledger_.subscriptions().find(group)->second);
    }
}

void SubscriptionLife::step(const StoreSubscription& subscription) {
    if (subscription.status == SubscriptionStatus::active) return endPeriod(subscription);
    auto changed = subscription;
    if (changed.status == SubscriptionStatus::gracePeriod)
        changed.status = SubscriptionStatus::billingRetry;
    else
        expire(changed, ExpirationIntent::billingError);
    changed.gracePeriodEnd.reset();
    ledger_.put(std::move(changed));
}

void SubscriptionLife::endPeriod(StoreSubscription subscription) {
    const auto* const product = catalogue_.product(subscription.productIdentifier);
    if (!subscription.renews)
        expire(subscription, ExpirationIntent::cancelled);
    else if (product == nullptr || product->kind != ProductKind::autoRenewing)
        expire(subscription, ExpirationIntent::productNotAvailable);
    else if (ledger_.settings().failingBilling.contains(product->identifier))
        failBilling(subscription);
    else
        deliver(
            startPeriod(subscription, *product, subscription.expirationDate, subscription.expirationDate));
    ledger_.put(std::move(subscription));
}

void SubscriptionLife::failBilling(StoreSubscription& subscription) const {
    subscription.expirationIntent = ExpirationIntent::billingError;
    if (!catalogue_.hasBillingGracePeriod) {
        subscription.status = SubscriptionStatus::billingRetry;
        return;
    }
    const auto period = catalogue_.product(subscription.productIdentifier)->period;
    subscription.status = SubscriptionStatus::gracePeriod;
    subscription.gracePeriodEnd = subscription.expirationDate + graceOf(period);
}

std::optional<Date> SubscriptionLife::nextDue() const {
    std::optional<Date> next;
    for (const auto& [group, subscription] : ledger_.subscriptions())
        if (const auto due = dueDate(subscription); due && (!next || *due < *next)) next = due;
    return next;
}

void SubscriptionLife::setRenews(StoreSubscription subscription, bool renews) {
    if (hasEnded(subscription))
        throw localStoreError(LocalStoreErrorCode::impossible,
                              "The subscription to " + subscription.productIdentifier + " has ended.");
    if (!renews && isOwed(subscription)) expire(subscription, ExpirationIntent::cancelled);
    subscription.renews = renews;
    ledger_.put(std::move(subscription));
}

void SubscriptionLife::collect(StoreSubscription subscription, Date now) {
    const auto* const product = catalogue_.product(subscription.productIdentifier);
    if (!isOwed(subscription) || product == nullptr) return;
    const bool isInGrace = subscription.status == SubscriptionStatus::gracePeriod;
    subscription.expirationIntent.reset();
    if (!isInGrace) subscription.periodsPassed = 0; // the next period starts the count
    deliver(startPeriod(subscription, *product, isInGrace ? subscription.expirationDate : now, now));
    ledger_.put(std::move(subscription));
    catchUp(now); // a period shorter than the grace that it was paid in is over already
}

void SubscriptionLife::revoke(const StorePurchase& purchase) {
    const auto found = ledger_.subscriptions().find(purchase.groupIdentifier);
    if (found == ledger_.subscriptions().end()) return;
    auto subscription = found->second;
    if (subscription.purchaseIdentifier != purchase.identifier || hasEnded(subscription)) return;
    subscription.status = SubscriptionStatus::revoked;
    subscription.renews = false;
    subscription.gracePeriodEnd.reset();
    subscription.expirationIntent = ExpirationIntent::cancelled;
    ledger_.put(std::move(subscription));
}

} // namespace corvantile
