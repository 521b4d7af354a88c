#include "CorvantileLocalStore/Engine/detail/StoreEngine.hpp"

#include "CorvantileLocalStore/Engine/detail/StoreFailures.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreLookups.hpp"
#include "CorvantileLocalStore/LocalStoreError.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

namespace {

[[noreturn]] void refuse(std::string message) {
    throw localStoreError(LocalStoreErrorCode::impossible, std::move(message));
}

} // namespace

StoreEngine::StoreEngine(const Catalogue& catalogue, StoreLedger& ledger)
    : catalogue_(catalogue),
      ledger_(ledger),
      subscriptions_(catalogue, ledger),
      payments_(catalogue, ledger, subscriptions_) {}

void StoreEngine::countRequest() {
    auto settings = ledger_.settings();
    if (settings.isOffline) throw storeError(storeFailure(SKErrorCode::cloudServiceNetworkConnectionFailed));
    if (settings.failingRequests <= 0) return;
    --settings.failingRequests;
    const auto failure = settings.requestFailure;
    ledger_.put(std::move(settings));
    throw storeError(failure);
}

void StoreEngine::refund(const std::string& identifier, bool isForIssue, Date now) {
    auto purchase = requirePurchase(ledger_, identifier);
    if (purchase.refundDate) refuse("The purchase " + purchase.identifier + " is refunded already.");
    purchase.refundDate = now;
    purchase.isRefundedForIssue = isForIssue;
    subscriptions_.revoke(purchase);
    ledger_.put(std::move(purchase));
}

void StoreEngine::promote(const std::string& productIdentifier) {
    auto settings = ledger_.settings();
    settings.promotions.push_back(requireProduct(catalogue_, productIdentifier).identifier);
    ledger_.put(std::move(settings));
}

bool StoreEngine::answerPromotion(const std::string& productIdentifier) {
    auto settings = ledger_.settings();
    auto& waiting = settings.promotions;
    const auto found = std::find(waiting.begin(), waiting.end(), productIdentifier);
    if (found == waiting.end()) return false;
    waiting.erase(found);
    ledger_.put(std::move(settings));
    return true;
}

void StoreEngine::setRenews(const std::string& productIdentifier, bool renews) {
    subscriptions_.setRenews(requireSubscription(ledger_, productIdentifier), renews);
}

void StoreEngine::setBilling(const std::string& productIdentifier, bool isFailing, Date now) {
    const auto& product = requireProduct(catalogue_, productIdentifier);
    if (product.kind != ProductKind::autoRenewing) refuse(productIdentifier + " does not renew.");
    auto settings = ledger_.settings();
    if (isFailing)
        settings.failingBilling.insert(productIdentifier);
    else
        settings.failingBilling.erase(productIdentifier);
    ledger_.put(std::move(settings));
    const auto found = ledger_.subscriptions().find(product.groupIdentifier);
    const bool isSubscribed =
        found != ledger_.subscriptions().end() && found->second.productIdentifier == productIdentifier;
    if (!isFailing && isSubscribed) subscriptions_.collect(found->second, now);
}

} // namespace corvantile
