#pragma once

#include "CorvantileIAP/ReceiptInfo.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

// The domain of the errors of reading a receipt; the code is the store's status, or `unreadableReceipt`.
inline constexpr const char* receiptErrorDomain = "corvantile.receipt";
inline constexpr int unreadableReceipt = -1;

// What the store means by a status other than 0, a sentence for people.
[[nodiscard]] CORVANTILE_API std::string receiptStatusText(int status);

// Whether the store's answer tells the purchases in spite of such a status.
[[nodiscard]] CORVANTILE_API bool hasPurchases(int status);

// Something in a receipt that was left out, or replaced by a default.
struct ReceiptProblem {
    std::string where{}; // `latest_receipt_info[3].purchase_date_ms`
    std::string what{};  // `not a date: "soon"`

    friend bool operator==(const ReceiptProblem&, const ReceiptProblem&) = default;
};

[[nodiscard]] inline std::string describe(const ReceiptProblem& problem) {
    return problem.where + ": " + problem.what;
}

// The store's account of what was bought.
struct StoreReceipt {
    std::string environment{};               // Production or Sandbox; empty when it does not say
    std::vector<ReceiptInfo> transactions{}; // in the order of the text, each transaction once
    std::vector<RenewalInfo> renewals{};
    std::vector<ReceiptProblem> problems{}; // what could not be read of it

    friend bool operator==(const StoreReceipt&, const StoreReceipt&) = default;
};

// Reads the store's JSON: its answer to a receipt, or a server notification around one. The rows of
// `latest_receipt_info` and `in_app` are taken together, the former first. A row is left out only if it lacks
// the identifier of its transaction or product.
// Throws NSError (receiptErrorDomain) when the text is no receipt, or the store's status says that it tells
// no purchases.
[[nodiscard]] CORVANTILE_API StoreReceipt readStoreReceipt(std::string_view json);

} // namespace corvantile
