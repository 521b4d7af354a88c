#include "CorvantileLocalStore/Engine/detail/SubscriptionTerms.hpp"

namespace corvantile {

namespace {

constexpr Days billingRetry{60};
constexpr Days gracePeriod{16};
constexpr Days shortGracePeriod{6}; // of a subscription by the week

} // namespace

Days graceOf(Period period) { return roughDays(period) <= 7 ? shortGracePeriod : gracePeriod; }

bool isOwed(const StoreSubscription& subscription) {
    return subscription.status == SubscriptionStatus::gracePeriod ||
           subscription.status == SubscriptionStatus::billingRetry;
}

bool hasEnded(const StoreSubscription& subscription) {
    return subscription.status == SubscriptionStatus::expired ||
           subscription.status == SubscriptionStatus::revoked;
}

std::optional<Date> dueDate(const StoreSubscription& subscription) {
    switch (subscription.status) {
    case SubscriptionStatus::active: return subscription.expirationDate;
    case SubscriptionStatus::gracePeriod: return subscription.gracePeriodEnd;
    case SubscriptionStatus::billingRetry: return subscription.expirationDate + billingRetry;
    case SubscriptionStatus::expired:
    case SubscriptionStatus::revoked: break;
    }
    return std::nullopt;
}

void expire(StoreSubscription& subscription, ExpirationIntent intent) {
    subscription.status = SubscriptionStatus::expired;
    subscription.expirationIntent = intent;
    subscription.gracePeriodEnd.reset();
    subscription.renews = false;
}

} // namespace corvantile
