#pragma once

#include "CorvantilePlay/detail/Receipts/PurchaseExplanation.hpp"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace corvantile::tool {

// What transactions cause together.
class RevenueSummary {
public:
    struct Total {
        int transactions = 0;
        int reported = 0;
        NSDecimalNumber revenue{};
    };

    void add(const ExplainedPurchase& purchase);

    // By product and currency.
    [[nodiscard]] const std::map<std::pair<std::string, std::string>, Total>& totals() const {
        return totals_;
    }
    // By currency and month (`2024-01`, UTC) of the purchase, from the first to the last with revenue and
    // those between.
    [[nodiscard]] std::map<std::string, std::map<std::string, NSDecimalNumber>> months() const;

private:
    std::map<std::pair<std::string, std::string>, Total> totals_;
    std::map<std::string, std::map<std::string, NSDecimalNumber>> months_;
};

// A bar for each month, the longest for the greatest revenue of its currency.
[[nodiscard]] std::vector<std::string> revenueChart(const RevenueSummary& summary);

} // namespace corvantile::tool
