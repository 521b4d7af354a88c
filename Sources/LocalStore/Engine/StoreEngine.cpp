#include "LocalStore/Engine/StoreEngine.hpp"

#include "LocalStore/Engine/StoreFailures.hpp"
#include "LocalStore/Engine/StoreLookups.hpp"
#include "LocalStore/LocalStoreError.hpp"

#include <algorithm>
#include <set>
#include <utility>

namespace corvantile {

namespace {

using State = SKPaymentTransactionState;

constexpr int mostPieces = 10;

bool comesInPieces(ProductKind kind) {
    return kind == ProductKind::consumable || kind == ProductKind::nonRenewing;
}

[[noreturn]] void refuse(LocalStoreErrorCode code, std::string message) {
    throw localStoreError(code, std::move(message));
}

} // namespace

StoreEngine::StoreEngine(const Catalogue& catalogue, StoreLedger& ledger)
    : catalogue_(catalogue), ledger_(ledger), subscriptions_(catalogue, ledger) {}

std::int64_t StoreEngine::addPayment(std::string productIdentifier, int quantity) {
    const auto number = ledger_.makeNumber();
    ledger_.put(StoreTransaction{
        .number = number, .productIdentifier = std::move(productIdentifier), .quantity = quantity});
    return number;
}

void StoreEngine::buy(const std::string& productIdentifier, int quantity, Date now) {
    settle(addPayment(requireProduct(catalogue_, productIdentifier).identifier, quantity), now);
}

void StoreEngine::settle(std::int64_t number, Date now) {
    const auto* const found = ledger_.transaction(number);
    if (found == nullptr || found->state != State::purchasing) return;
    auto transaction = *found;
    auto settings = ledger_.settings();
    const auto decided = settings.nextPayments.find(transaction.productIdentifier);
    if (settings.isOffline || decided == settings.nextPayments.end())
        return complete(std::move(transaction), now);
    const auto next = decided->second;
    settings.nextPayments.erase(decided);
    ledger_.put(std::move(settings));
    if (next.decision == PaymentDecision::isHeld) return;
    if (next.decision == PaymentDecision::fails)
        return fail(std::move(transaction), next.failure.value_or(storeFailure(SKErrorCode::unknown)));
    transaction.state = State::deferred;
    ledger_.put(std::move(transaction));
}

void StoreEngine::complete(StoreTransaction transaction, Date now) {
    if (auto failure = refusal(transaction)) return fail(std::move(transaction), *std::move(failure));
    sell(transaction, *catalogue_.product(transaction.productIdentifier), now);
    transaction.state = State::purchased;
    ledger_.put(std::move(transaction));
}

void StoreEngine::fail(StoreTransaction transaction, StoreFailure failure) {
    transaction.state = State::failed;
    transaction.failure = std::move(failure);
    ledger_.put(std::move(transaction));
}

std::optional<StoreFailure> StoreEngine::refusal(const StoreTransaction& transaction) const {
    if (ledger_.settings().isOffline) return storeFailure(SKErrorCode::cloudServiceNetworkConnectionFailed);
    const auto* const product = catalogue_.product(transaction.productIdentifier);
    if (product == nullptr) return storeFailure(SKErrorCode::storeProductNotAvailable);
    const int most = comesInPieces(product->kind) ? mostPieces : 1;
    if (transaction.quantity < 1 || transaction.quantity > most)
        return StoreFailure{SKErrorCode::paymentInvalid, "A payment for " + product->identifier +
                                                             " is for 1 to " + std::to_string(most) +
                                                             " pieces."};
    if (product->kind != ProductKind::autoRenewing) return std::nullopt;
    if (auto obstacle = subscriptions_.obstacle(*product))
        return StoreFailure{SKErrorCode::paymentInvalid, *std::move(obstacle)};
    if (ledger_.settings().failingBilling.contains(product->identifier))
        return StoreFailure{SKErrorCode::unknown, "The customer's payment method was declined."};
    return std::nullopt;
}

void StoreEngine::sell(StoreTransaction& transaction, const CatalogueProduct& product, Date now) {
    transaction.date = now;
    if (product.kind == ProductKind::autoRenewing) {
        transaction.identifier = subscriptions_.begin(product, now).identifier;
        return;
    }
    const auto identifier = ledger_.makeIdentifier();
    transaction.identifier = identifier;
    if (const auto* const before = owned(product)) {
        // Nobody pays twice for what lasts: the queue says purchased, the receipt shows the one purchase.
        transaction.originalIdentifier = before->identifier;
        return;
    }
    ledger_.put(StorePurchase{.identifier = identifier,
                              .originalIdentifier = identifier,
                              .productIdentifier = product.identifier,
                              .kind = product.kind,
                              .quantity = transaction.quantity,
                              .price = product.price,
                              .date = now,
                              .originalDate = now});
}

const StorePurchase* StoreEngine::owned(const CatalogueProduct& product) const {
    if (product.kind != ProductKind::nonConsumable) return nullptr;
    const auto& all = ledger_.purchases();
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& entry) {
        return entry.second.productIdentifier == product.identifier && !entry.second.refundDate;
    });
    return found == all.end() ? nullptr : &found->second;
}

void StoreEngine::finish(std::int64_t number) {
    const auto* const transaction = ledger_.transaction(number);
    if (transaction == nullptr) return;
    if (transaction->state == State::purchasing || transaction->state == State::deferred)
        throw storeError(storeFailure(SKErrorCode::clientInvalid));
    if (const auto& identifier = transaction->identifier)
        if (const auto* const found = ledger_.purchase(*identifier)) {
            auto purchase = *found;
            purchase.isFinished = true;
            ledger_.put(std::move(purchase));
        }
    ledger_.removeTransaction(number);
}

void StoreEngine::countRequest() {
    auto settings = ledger_.settings();
    if (settings.isOffline) throw storeError(storeFailure(SKErrorCode::cloudServiceNetworkConnectionFailed));
    if (settings.failingRequests <= 0) return;
    --settings.failingRequests;
    const auto failure = settings.requestFailure;
    ledger_.put(std::move(settings));
    throw storeError(failure);
}

void StoreEngine::restore(Date now) {
    std::set<std::string> waiting;
    for (const auto& [number, transaction] : ledger_.transactions()) {
        if (transaction.identifier) waiting.insert(*transaction.identifier);
        if (transaction.originalIdentifier) waiting.insert(*transaction.originalIdentifier);
    }
    for (const auto& [identifier, purchase] : ledger_.purchases()) {
        if (comesInPieces(purchase.kind) || purchase.refundDate || waiting.contains(identifier)) continue;
        ledger_.put(StoreTransaction{.number = ledger_.makeNumber(),
                                     .productIdentifier = purchase.productIdentifier,
                                     .quantity = purchase.quantity,
                                     .state = State::restored,
                                     .identifier = ledger_.makeIdentifier(),
                                     .originalIdentifier = identifier,
                                     .date = now});
    }
}

void StoreEngine::decideNextPayment(const std::string& productIdentifier, NextPayment next) {
    auto settings = ledger_.settings();
    settings.nextPayments.insert_or_assign(requireProduct(catalogue_, productIdentifier).identifier,
                                           std::move(next));
    ledger_.put(std::move(settings));
}

void StoreEngine::approve(const std::string& productIdentifier, Date now) {
    complete(requireUndecided(ledger_, productIdentifier), now);
}

void StoreEngine::decline(const std::string& productIdentifier) {
    fail(requireUndecided(ledger_, productIdentifier),
         {SKErrorCode::paymentCancelled, "Whoever had to approve the payment has declined it."});
}

void StoreEngine::refund(const std::string& identifier, bool isForIssue, Date now) {
    auto purchase = requirePurchase(ledger_, identifier);
    if (purchase.refundDate)
        refuse(LocalStoreErrorCode::impossible,
               "The purchase " + purchase.identifier + " is refunded already.");
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
    if (product.kind != ProductKind::autoRenewing)
        refuse(LocalStoreErrorCode::impossible, productIdentifier + " does not renew.");
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
