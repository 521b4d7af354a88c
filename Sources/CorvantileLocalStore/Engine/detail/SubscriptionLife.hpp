#pragma once

#include "CorvantileLocalStore/Catalogue/Catalogue.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreLedger.hpp"

#include <optional>
#include <string>

namespace corvantile {

// What time and people do to subscriptions. Borrows the catalogue and the ledger.
//
// A period that ends is followed by the next one if the subscription renews and somebody pays. If nobody
// does, the customer has a grace period where the catalogue grants one, then the store tries for a while to
// collect the money; paid in the grace period the calendar goes on as if nothing had been, later it begins
// anew.
class SubscriptionLife {
public:
    SubscriptionLife(const Catalogue& catalogue, StoreLedger& ledger)
        : catalogue_(catalogue), ledger_(ledger) {}

    // Why the product cannot be bought now, for people; nullopt when it can.
    [[nodiscard]] std::optional<std::string> obstacle(const CatalogueProduct& product) const;

    // The first period, and its purchase. Only where there is no obstacle.
    StorePurchase begin(const CatalogueProduct& product, Date now);

    // Lets happen what was to happen up to `now`, in order, each thing at its own date.
    void catchUp(Date now);
    // When something happens next, if nobody interferes.
    [[nodiscard]] std::optional<Date> nextDue() const;

    // A subscription that nobody renews ends with its period; one whose period is over ends at once. Throws
    // NSError for one that has ended.
    void setRenews(StoreSubscription subscription, bool renews);

    // The money of a subscription that is owed is collected at once.
    void collect(StoreSubscription subscription, Date now);

    // Ends it if `purchase` is its latest period.
    void revoke(const StorePurchase& purchase);

private:
    StorePurchase startPeriod(StoreSubscription& subscription, const CatalogueProduct& product, Date start,
                              Date now);
    void deliver(const StorePurchase& purchase);
    void endPeriod(StoreSubscription subscription);
    void failBilling(StoreSubscription& subscription) const;
    void step(const StoreSubscription& subscription);

    const Catalogue& catalogue_;
    StoreLedger& ledger_;
};

} // namespace corvantile
