#include "CorvantilePlay/detail/Receipts/RevenueSummary.hpp"

#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include "CorvantilePlatform/Foundation/detail/CalendarText.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>

namespace corvantile::tool {

namespace {

constexpr std::string_view anyMonth = "2024-01";
constexpr double longestBar = 40;
constexpr std::size_t mostMonths = 240; // receipts may hold any date

std::string monthOf(Date date) { return timestamp(date, std::chrono::seconds(0)).substr(0, anyMonth.size()); }

std::string monthAfter(const std::string& text) {
    const int number = std::stoi(text.substr(0, 4)) * 12 + std::stoi(text.substr(5));
    char after[32];
    std::snprintf(after, sizeof after, "%04d-%02d", number / 12, number % 12 + 1);
    return after;
}

std::string bar(const NSDecimalNumber& revenue, const NSDecimalNumber& greatest) {
    if (revenue.isZero()) return {};
    const double share = revenue.doubleValue() / greatest.doubleValue();
    const auto length = std::max(1L, std::lround(share * longestBar));
    return std::string(static_cast<std::size_t>(length), '#');
}

} // namespace

void RevenueSummary::add(const ExplainedPurchase& purchase) {
    auto& total = totals_[{purchase.record.productID, purchase.currency}];
    ++total.transactions;
    const auto revenue = purchase.revenue();
    if (!revenue) return;
    ++total.reported;
    total.revenue = total.revenue + *revenue;
    if (revenue->isZero()) return;
    auto& sum = months_[purchase.currency][monthOf(purchase.record.purchaseDate)];
    sum = sum + *revenue;
}

std::map<std::string, std::map<std::string, NSDecimalNumber>> RevenueSummary::months() const {
    auto filled = months_;
    for (auto& [currency, months] : filled) {
        const auto last = months.rbegin()->first;
        for (auto at = months.begin()->first; at < last && months.size() < mostMonths; at = monthAfter(at))
            months.try_emplace(at);
    }
    return filled;
}

std::vector<std::string> revenueChart(const RevenueSummary& summary) {
    std::vector<Cells> rows;
    for (const auto& [currency, months] : summary.months()) {
        NSDecimalNumber greatest;
        for (const auto& [name, revenue] : months) greatest = std::max(greatest, revenue);
        for (const auto& [name, revenue] : months)
            rows.push_back({name, revenue.description() + " " + currency, bar(revenue, greatest)});
    }
    return alignedLines(rows);
}

} // namespace corvantile::tool
