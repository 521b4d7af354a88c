#include "CorvantileLocalStore/Engine/detail/StoreLookups.hpp"

#include "CorvantileLocalStore/LocalStoreError.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

namespace {

[[noreturn]] void refuseUnknown(std::string message) {
    throw localStoreError(LocalStoreErrorCode::unknown, std::move(message));
}

} // namespace

const CatalogueProduct& requireProduct(const Catalogue& catalogue, const std::string& identifier) {
    if (const auto* const product = catalogue.product(identifier)) return *product;
    refuseUnknown("The store sells no product " + identifier + ".");
}

const StoreSubscription& requireSubscription(const StoreLedger& ledger,
                                             const std::string& productIdentifier) {
    for (const auto& [group, subscription] : ledger.subscriptions())
        if (subscription.productIdentifier == productIdentifier) return subscription;
    refuseUnknown("Nobody is subscribed to " + productIdentifier + ".");
}

const StoreTransaction& requireUndecided(const StoreLedger& ledger, const std::string& productIdentifier) {
    for (const auto& [number, transaction] : ledger.transactions()) {
        const bool isOpen = transaction.state == SKPaymentTransactionState::deferred ||
                            transaction.state == SKPaymentTransactionState::purchasing;
        if (isOpen && transaction.productIdentifier == productIdentifier) return transaction;
    }
    refuseUnknown("No payment for " + productIdentifier + " waits for approval.");
}

const StorePurchase& requirePurchase(const StoreLedger& ledger, const std::string& identifier) {
    if (const auto* const purchase = ledger.purchase(identifier)) return *purchase;
    const auto& all = ledger.purchases();
    const auto latest = std::find_if(all.rbegin(), all.rend(), [&](const auto& entry) {
        return entry.second.productIdentifier == identifier;
    });
    if (latest != all.rend()) return latest->second;
    refuseUnknown("Nothing was bought that is called " + identifier + ".");
}

} // namespace corvantile
