#pragma once

#include "Corvantile/Plugin/Analytic/PurchaseDecision.hpp"
#include "CorvantileIAP/StoreReceipt.hpp"
#include "LocalStore/Catalogue/Catalogue.hpp"
#include "Platform/Foundation/Date.hpp"
#include "Platform/Foundation/NSDecimalNumber.hpp"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// What purchase analytics would make of a receipt, and why. Nothing is marked or sent.
namespace corvantile::tool {

// Why a transaction causes nothing.
enum class Silence { marked, beforeFirstDate, expired, noCategory };

struct ExplainedPurchase {
    ReceiptInfo record;
    std::optional<PurchaseDecision> decision; // of a record that counts at all
    std::optional<Silence> silence;
    std::string currency; // of the catalogue; empty for a product that is not in it

    // What goes out, in order, as people read it; nothing when silent.
    [[nodiscard]] std::vector<std::string> sent() const;
    // What the sinks are told as earned: nothing for a trial or a renewal, nullopt when silent.
    [[nodiscard]] std::optional<NSDecimalNumber> revenue() const;
};

// How analytics sees the world.
struct ExplanationContext {
    const Catalogue& catalogue;
    Date firstDate = DecodingDefaults::invalidDate;
    Date now{};
    std::set<std::string> marked{}; // transactions that were reported before
};

// The receipt's transactions, oldest first. What one receipt reports is marked for the next.
[[nodiscard]] std::vector<ExplainedPurchase> explainReceipt(const StoreReceipt& receipt,
                                                            ExplanationContext& context);

// `first purchase, a trial`; of a record that is left out: empty.
[[nodiscard]] std::string_view ruleOf(PurchaseKind kind);
[[nodiscard]] std::string_view describe(Silence silence);

} // namespace corvantile::tool
