#pragma once

#include "LocalStore/Catalogue/Catalogue.hpp"
#include "LocalStore/Engine/StoreLedger.hpp"
#include "LocalStore/Engine/SubscriptionLife.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

// The rules of the store, over a catalogue and a ledger that it borrows. It has no clock, no thread and no
// file: every change goes into the ledger. What cannot be done throws NSError (localStoreErrorDomain) and
// changes nothing.
class StoreEngine {
public:
    StoreEngine(const Catalogue& catalogue, StoreLedger& ledger);

    [[nodiscard]] SubscriptionLife& subscriptions() { return subscriptions_; }

    // Puts a payment into the queue, as purchasing. `settle` then decides what becomes of it, if nobody else
    // has.
    std::int64_t addPayment(std::string productIdentifier, int quantity);
    void settle(std::int64_t number, Date now);

    // Both at once, of a product that is sold.
    void buy(const std::string& productIdentifier, int quantity, Date now);

    // Takes a transaction out of the queue; what is not there any more is finished already. Throws NSError
    // (storeErrorDomain, clientInvalid) for one that is still under way.
    void finish(std::int64_t number);

    // Queues what was bought, is no consumable, was not refunded and does not wait in the queue anyhow.
    void restore(Date now);

    // Throws NSError (storeErrorDomain) for a request that is to fail.
    void countRequest();

    void decideNextPayment(const std::string& productIdentifier, NextPayment next);
    // The oldest payment for the product that was deferred or held.
    void approve(const std::string& productIdentifier, Date now);
    void decline(const std::string& productIdentifier);

    void refund(const std::string& identifier, bool isForIssue, Date now);
    void promote(const std::string& productIdentifier);
    // The app has been asked. False: nobody waits for an answer any more.
    bool answerPromotion(const std::string& productIdentifier);

    void setRenews(const std::string& productIdentifier, bool renews);
    void setBilling(const std::string& productIdentifier, bool isFailing, Date now);

private:
    [[nodiscard]] std::optional<StoreFailure> refusal(const StoreTransaction& transaction) const;
    void complete(StoreTransaction transaction, Date now);
    void fail(StoreTransaction transaction, StoreFailure failure);
    void sell(StoreTransaction& transaction, const CatalogueProduct& product, Date now);
    [[nodiscard]] const StorePurchase* owned(const CatalogueProduct& product) const;

    const Catalogue& catalogue_;
    StoreLedger& ledger_;
    SubscriptionLife subscriptions_;
};

} // namespace corvantile
