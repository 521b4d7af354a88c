#pragma once

#include "Corvantile/Plugin/Analytic/DefaultEvent.hpp"
#include "CorvantileIAP/ProductCategory.hpp"
#include "CorvantileIAP/ReceiptInfo.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// What purchase analytics makes of a record: the rules alone, so that they can be explained as well as
// carried out. Nothing here looks anything up or sends anything.
namespace corvantile {

enum class PurchaseKind {
    trial,           // the first purchase, free for a while
    subscription,    // the first purchase, paid
    oneTimePurchase, // the first purchase, of something that does not expire
    trialConversion, // the paid period right after a trial
    renewal,         // any other later period
    expired,         // a later period that is over: silent
};

struct CORVANTILE_API PurchaseDecision {
    PurchaseKind kind = PurchaseKind::expired;
    std::string name{};                  // `trial_subscribe_PRODUCT`, of the product's own; empty if silent
    std::string productID{};             // names the event: the category's identifier, or the product's
    NSDecimalNumber value{};             // what was paid: nothing for a trial
    std::string currency{};              // empty when the price has none
    std::optional<std::string> region{}; // of the store
    std::string transactionID{};
    Date purchaseDate{};

    // What the record causes, in the order of sending.
    // The event; none when silent.
    [[nodiscard]] std::optional<DefaultEvent> event() const;
    // Whether the event itself carries `value` as revenue.
    [[nodiscard]] bool sendsRevenue() const;
    // Whether `value` is reported as a subscription purchase.
    [[nodiscard]] bool reportsSubscription() const;
    // Whether `value` counts into the total of subscriptions.
    [[nodiscard]] bool countsIntoTotal() const;
};

[[nodiscard]] inline bool isFirstPurchase(const ReceiptInfo& record) {
    return record.transactionID == record.originalTransactionID;
}

// The same categories with the records bought at `firstDate` or later, the first purchase at position 0.
// Those without a product are left out: a host's own source may publish them.
[[nodiscard]] CORVANTILE_API std::vector<ProductCategory>
preparePurchases(const std::vector<ProductCategory>& categories, Date firstDate);

// About the record at `position` of a prepared category.
[[nodiscard]] CORVANTILE_API PurchaseDecision decidePurchase(const ProductCategory& prepared,
                                                             std::size_t position, Date now);

} // namespace corvantile
