#pragma once

#include "CorvantileLocalStore/Catalogue/Catalogue.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreLedger.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

class SubscriptionLife;

// What becomes of payments, from the queue into the receipt and out of the queue. Borrows the catalogue, the
// ledger, and the life of the subscriptions that payments begin.
class PaymentLife {
public:
    PaymentLife(const Catalogue& catalogue, StoreLedger& ledger, SubscriptionLife& subscriptions);

    // Puts a payment into the queue, as purchasing. `settle` then decides what becomes of it, if nobody else
    // has.
    std::int64_t add(std::string productIdentifier, int quantity);
    void settle(std::int64_t number, Date now);

    // Both at once, of a product that is sold.
    void buy(const std::string& productIdentifier, int quantity, Date now);

    // Takes a transaction out of the queue; what is not there any more is finished already. Throws NSError
    // (storeErrorDomain, clientInvalid) for one that is still under way.
    void finish(std::int64_t number);

    // Queues what was bought, is no consumable, was not refunded and does not wait in the queue anyhow.
    // Returns their numbers.
    std::vector<std::int64_t> restore(Date now);

    void decideNext(const std::string& productIdentifier, NextPayment next);
    // The oldest payment for the product that was deferred or held.
    void approve(const std::string& productIdentifier, Date now);
    void decline(const std::string& productIdentifier);

private:
    [[nodiscard]] std::optional<StoreFailure> refusal(const StoreTransaction& transaction) const;
    void complete(StoreTransaction transaction, Date now);
    void fail(StoreTransaction transaction, StoreFailure failure);
    void sell(StoreTransaction& transaction, const CatalogueProduct& product, Date now);
    [[nodiscard]] const StorePurchase* owned(const CatalogueProduct& product) const;

    const Catalogue& catalogue_;
    StoreLedger& ledger_;
    SubscriptionLife& subscriptions_;
};

} // namespace corvantile
