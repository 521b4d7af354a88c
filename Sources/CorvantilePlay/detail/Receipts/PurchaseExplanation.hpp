#pragma once

#include "Corvantile/Plugin/Analytic/detail/PurchaseDecision.hpp"
#include "CorvantileIAP/ProductCategory.hpp"
#include "CorvantileIAP/StoreReceipt.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// What purchase analytics would make of a receipt, and why. Nothing is marked or sent.
namespace corvantile::tool {

// Why a transaction causes nothing.
enum class Silence { marked, beforeFirstDate, expired, notListed, notSold };

// One of the things that a transaction causes.
struct SentReport {
    enum class Type { event, revenue, subscription };

    Type type;
    std::string event; // its name; empty for a subscription report, which has none
    NSDecimalNumber price;
    std::string currency;
};

struct ExplainedPurchase {
    ReceiptInfo record;
    std::optional<PurchaseDecision> decision; // of a record that counts at all
    std::optional<Silence> silence;
    std::string currency; // of the product; empty for one that is not listed or sold

    // What goes out, in order; nothing when silent.
    [[nodiscard]] std::vector<SentReport> sent() const;
    // What the sinks are told as earned: nothing for a trial or a renewal, nullopt when silent.
    [[nodiscard]] std::optional<NSDecimalNumber> revenue() const;
};

// How analytics sees the world.
struct ExplanationContext {
    std::vector<ReceiptProduct> products; // those without a `product` are not sold
    Silence ofOthers = Silence::notSold;  // why other products cause nothing
    Date firstDate = DecodingDefaults::invalidDate;
    Date now{};
    std::set<std::string> marked{}; // transactions that were reported before
};

// The receipt's transactions, oldest first. What one receipt reports is marked for the next.
[[nodiscard]] std::vector<ExplainedPurchase> explainReceipt(const StoreReceipt& receipt,
                                                            ExplanationContext& context);

// `trial_subscribe_pro 0 USD`.
[[nodiscard]] std::string describe(const SentReport& report);
[[nodiscard]] std::string_view describe(SentReport::Type type);

// `first purchase, a trial`; of a record that is left out: empty.
[[nodiscard]] std::string_view ruleOf(PurchaseKind kind);
[[nodiscard]] std::string_view describe(Silence silence);

} // namespace corvantile::tool
