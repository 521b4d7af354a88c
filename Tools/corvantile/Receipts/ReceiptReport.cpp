#include "Tools/corvantile/Receipts/ReceiptReport.hpp"

#include "Platform/Foundation/NSError.hpp"
#include "Tools/corvantile/Faces/JSONLinesFace.hpp"
#include "Tools/corvantile/Faces/VisibleText.hpp"
#include "Tools/corvantile/FileText.hpp"
#include "Tools/corvantile/TextTable.hpp"

#include <ostream>
#include <utility>

namespace corvantile::tool {

namespace {

Cells purchaseCells(const ExplainedPurchase& purchase) {
    const auto& record = purchase.record;
    return {describe(record.purchaseDate), std::to_string(record.transactionID), record.productID,
            purchase.decision ? std::string(ruleOf(purchase.decision->kind)) : "",
            purchase.silence ? "silent: " + std::string(tool::describe(*purchase.silence))
                             : joined(purchase.sent(), "; ")};
}

EventValue::Map purchaseFields(const std::filesystem::path& file, const ExplainedPurchase& purchase) {
    const auto& record = purchase.record;
    EventValue::Map fields{{"file", file.string()},
                           {"transaction", record.transactionID},
                           {"product", record.productID},
                           {"date", record.purchaseDate}};
    if (purchase.decision) fields.emplace("rule", ruleOf(purchase.decision->kind));
    if (purchase.silence) {
        fields.emplace("silent", tool::describe(*purchase.silence));
        return fields;
    }
    const auto sent = purchase.sent();
    fields.emplace("sent", EventValue::List(sent.begin(), sent.end()));
    fields.emplace("revenue", *purchase.revenue());
    fields.emplace("currency", purchase.currency);
    return fields;
}

} // namespace

ReceiptReport::ReceiptReport(ExplanationContext context, bool json, std::ostream& out)
    : context_(std::move(context)), json_(json), out_(out) {}

void ReceiptReport::explain(const std::filesystem::path& file) {
    const auto text = readFileText(file, "a receipt as the store's JSON");
    try {
        show(file, readStoreReceipt(text));
    } catch (const NSError& error) {
        hasFailed_ = true;
        showFault(file, error.localizedDescription());
    }
}

ExitCode ReceiptReport::conclude() {
    if (json_)
        showTotalsAsJSON();
    else
        showTotals();
    return hasFailed_ ? ExitCode::failed : ExitCode::success;
}

void ReceiptReport::show(const std::filesystem::path& file, const StoreReceipt& receipt) {
    const auto purchases = explainReceipt(receipt, context_);
    for (const auto& purchase : purchases) summary_.add(purchase);
    if (json_) return showAsJSON(file, purchases, receipt);
    out_ << visibleText(file.string()) << '\n';
    std::vector<Cells> rows;
    rows.reserve(purchases.size());
    for (const auto& purchase : purchases) rows.push_back(purchaseCells(purchase));
    showRows(alignedLines(rows));
    if (rows.empty()) out_ << "  Nothing was bought.\n";
    for (const auto& problem : receipt.problems)
        out_ << "  problem: " << visibleText(describe(problem), 2) << '\n';
}

void ReceiptReport::showAsJSON(const std::filesystem::path& file,
                               const std::vector<ExplainedPurchase>& purchases, const StoreReceipt& receipt) {
    for (const auto& purchase : purchases) out_ << jsonText(purchaseFields(file, purchase)) << '\n';
    for (const auto& problem : receipt.problems)
        out_ << jsonText(EventValue::Map{{"file", file.string()}, {"problem", describe(problem)}}) << '\n';
}

void ReceiptReport::showFault(const std::filesystem::path& file, const std::string& fault) {
    if (json_)
        out_ << jsonText(EventValue::Map{{"file", file.string()}, {"fault", fault}}) << '\n';
    else
        out_ << visibleText("wrong: " + file.string() + ": " + fault) << '\n';
}

void ReceiptReport::showRows(const std::vector<std::string>& lines) {
    for (const auto& line : lines) out_ << "  " << visibleText(line) << '\n';
}

void ReceiptReport::showTotals() {
    std::vector<Cells> rows;
    for (const auto& [key, total] : summary_.totals()) {
        const auto& [product, currency] = key;
        rows.push_back({product, std::to_string(total.reported) + " of " + std::to_string(total.transactions),
                        total.revenue.description() + " " + currency});
    }
    if (rows.empty()) return;
    out_ << "\nReported of each product, and the revenue\n";
    showRows(alignedLines(rows));
    const auto chart = revenueChart(summary_);
    if (!chart.empty()) out_ << "\nRevenue by month\n";
    showRows(chart);
}

void ReceiptReport::showTotalsAsJSON() {
    for (const auto& [key, total] : summary_.totals())
        out_ << jsonText(EventValue::Map{{"total", key.first},
                                         {"currency", key.second},
                                         {"transactions", total.transactions},
                                         {"reported", total.reported},
                                         {"revenue", total.revenue}})
             << '\n';
    for (const auto& [currency, months] : summary_.months())
        for (const auto& [month, revenue] : months)
            out_ << jsonText(EventValue::Map{{"month", month}, {"currency", currency}, {"revenue", revenue}})
                 << '\n';
}

} // namespace corvantile::tool
