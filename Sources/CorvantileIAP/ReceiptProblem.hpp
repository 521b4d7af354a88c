#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>

namespace corvantile {

// Something in a receipt that was left out, or replaced by a default.
struct ReceiptProblem {
    std::string where{}; // `latest_receipt_info[3].purchase_date_ms`
    std::string what{};  // `not a date: "soon"`

    friend bool operator==(const ReceiptProblem&, const ReceiptProblem&) = default;
};

[[nodiscard]] inline std::string describe(const ReceiptProblem& problem) {
    return problem.where + ": " + problem.what;
}

} // namespace corvantile
