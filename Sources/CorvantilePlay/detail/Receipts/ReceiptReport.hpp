#pragma once

#include "CorvantileIAP/StoreReceipt.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Receipts/PurchaseExplanation.hpp"
#include "CorvantilePlay/detail/Receipts/RevenueSummary.hpp"

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace corvantile::tool {

class AppSinks;

// One receipt after the other, explained.
class ReceiptReport {
public:
    // Borrows all but the context. `sinks`: null without an app.
    ReceiptReport(ExplanationContext context, const AppSinks* sinks, CommandOutput& output);

    // A file that is no receipt is an error of the output; a UsageError when it cannot be read.
    void explain(const std::filesystem::path& file);

    // Totals by product, revenue by month, and which sink accepts which event.
    void showTotals();

private:
    void show(const std::filesystem::path& file, const StoreReceipt& receipt);
    void showTable(const std::filesystem::path& file, const std::vector<ExplainedPurchase>& purchases);
    [[nodiscard]] EventValue::Map fieldsOf(const ExplainedPurchase& purchase) const;
    [[nodiscard]] EventValue::List sentFields(const ExplainedPurchase& purchase) const;
    void printRows(const std::vector<std::string>& lines);
    void showProducts();
    void showMonths();
    void printSinks();

    ExplanationContext context_;
    const AppSinks* const sinks_;
    CommandOutput& output_;
    RevenueSummary summary_;
    std::set<std::string> events_; // names of those that were sent; empty: a subscription report
};

} // namespace corvantile::tool
