#include "CorvantileLocalStore/Engine/detail/PaymentLife.hpp"

#include "CorvantileLocalStore/Engine/detail/StoreFailures.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreLookups.hpp"
#include "CorvantileLocalStore/Engine/detail/SubscriptionLife.hpp"

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

} // namespace

PaymentLife::PaymentLife(const Catalogue& catalogue, StoreLedger& ledger, SubscriptionLife& subscriptions)
    : catalogue_(catalogue), ledger_(ledger), subscriptions_(subscriptions) {}

std::int64_t PaymentLife::add(std::string productIdentifier, int quantity) {
    const auto number = ledger_.makeNumber();
    ledger_.put(StoreTransaction{
        .number = number, .productIdentifier = std::move(productIdentifier), .quantity = quantity});
    return number;
}

void PaymentLife::buy(const std::string& productIdentifier, int quantity, Date now) {
    settle(add(requireProduct(catalogue_, productIdentifier).identifier, quantity), now);
}

void PaymentLife::settle(std::int64_t number, Date now) {
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

void PaymentLife::complete(StoreTransaction transaction, Date now) {
    if (auto failure = refusal(transaction)) return fail(std::move(transaction), *std::move(failure));
    sell(transaction, *catalogue_.product(transaction.productIdentifier), now);
    transaction.state = State::purchased;
    ledger_.put(std::move(transaction));
}

void PaymentLife::fail(StoreTransaction transaction, StoreFailure failure) {
    transaction.state = State::failed;
    transaction.failure = std::move(failure);
    ledger_.put(std::move(transaction));
}

std::optional<StoreFailure> PaymentLife::refusal(const StoreTransaction& transaction) const {
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

void PaymentLife::sell(StoreTransaction& transaction, const CatalogueProduct& product, Date now) {
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

const StorePurchase* PaymentLife::owned(const CatalogueProduct& product) const {
    if (product.kind != ProductKind::nonConsumable) return nullptr;
    const auto& all = ledger_.purchases();
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& entry) {
        return entry.second.productIdentifier == product.identifier && !entry.second.refundDate;
    });
    return found == all.end() ? nullptr : &found->second;
}

void PaymentLife::finish(std::int64_t number) {
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

std::vector<std::int64_t> PaymentLife::restore(Date now) {
    std::set<std::string> waiting;
    for (const auto& [number, transaction] : ledger_.transactions()) {
        if (transaction.identifier) waiting.insert(*transaction.identifier);
        if (transaction.originalIdentifier) waiting.insert(*transaction.originalIdentifier);
    }
    std::vector<std::int64_t> numbers;
    for (const auto& [identifier, purchase] : ledger_.purchases()) {
        if (comesInPieces(purchase.kind) || purchase.refundDate || waiting.contains(identifier)) continue;
        ledger_.put(StoreTransaction{.number = numbers.emplace_back(ledger_.makeNumber()),
                                     .productIdentifier = purchase.productIdentifier,
                                     .quantity = purchase.quantity,
                                     .state = State::restored,
                                     .identifier = ledger_.makeIdentifier(),
                                     .originalIdentifier = identifier,
                                     .date = now});
    }
    return numbers;
}

void PaymentLife::decideNext(const std::string& productIdentifier, NextPayment next) {
    auto settings = ledger_.settings();
    settings.nextPayments.insert_or_assign(requireProduct(catalogue_, productIdentifier).identifier,
                                           std::move(next));
    ledger_.put(std::move(settings));
}

void PaymentLife::approve(const std::string& productIdentifier, Date now) {
    complete(requireUndecided(ledger_, productIdentifier), now);
}

void PaymentLife::decline(const std::string& productIdentifier) {
    fail(requireUndecided(ledger_, productIdentifier),
         {SKErrorCode::paymentCancelled, "Whoever had to approve the payment has declined it."});
}

} // namespace corvantile
