#include "CorvantilePlay/detail/Receipts/ReceiptReport.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/detail/Receipts/AppSinks.hpp"
#include "CorvantilePlay/detail/Text/FileText.hpp"
#include "CorvantilePlay/detail/Text/JSONText.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <nlohmann/json.hpp>

#include <utility>

namespace corvantile::tool {

namespace {

Cells cellsOf(const ExplainedPurchase& purchase) {
    const auto& record = purchase.record;
    std::vector<std::string> sent;
    for (const auto& report : purchase.sent()) sent.push_back(tool::describe(report));
    return {describe(record.purchaseDate), std::to_string(record.transactionID), record.productID,
            purchase.decision ? std::string(ruleOf(purchase.decision->kind)) : "",
            purchase.silence ? "silent: " + std::string(tool::describe(*purchase.silence))
                             : joined(sent, "; ")};
}

std::vector<SinkAnswer> answersTo(const AppSinks& sinks, const std::string& event) {
    return event.empty() ? sinks.answersToSubscriptions() : sinks.answersTo(event);
}

} // namespace

ReceiptReport::ReceiptReport(ExplanationContext context, const AppSinks* sinks, CommandOutput& output)
    : context_(std::move(context)), sinks_(sinks), output_(output) {}

void ReceiptReport::explain(const std::filesystem::path& file) {
    const auto text = readFileText(file, "a receipt as the store's JSON");
    try {
        show(file, readStoreReceipt(text));
    } catch (const NSError& error) {
        output_.showError(file.string() + ": " + error.localizedDescription(), {{"file", file.string()}});
    }
}

void ReceiptReport::showTotals() {
    showProducts();
    showMonths();
    if (sinks_ != nullptr) printSinks();
}

void ReceiptReport::show(const std::filesystem::path& file, const StoreReceipt& receipt) {
    const auto purchases = explainReceipt(receipt, context_);
    for (const auto& purchase : purchases) {
        summary_.add(purchase);
        for (const auto& report : purchase.sent()) events_.insert(report.event);
    }
    showTable(file, purchases);
    for (const auto& problem : receipt.problems)
        output_.show("problem", {{"file", file.string()}, {"where", problem.where}, {"error", problem.what}},
                     "  problem: " + visibleText(describe(problem), 2));
}

void ReceiptReport::showTable(const std::filesystem::path& file,
                              const std::vector<ExplainedPurchase>& purchases) {
    output_.print(visibleText(file.string()));
    std::vector<Cells> rows;
    rows.reserve(purchases.size());
    for (const auto& purchase : purchases) rows.push_back(cellsOf(purchase));
    const auto lines = alignedLines(rows);
    for (std::size_t row = 0; row < lines.size(); ++row) {
        auto fields = fieldsOf(purchases[row]);
        fields.emplace("file", file.string());
        output_.show("transaction", toJSON(fields), "  " + visibleText(lines[row]));
    }
    if (rows.empty()) output_.print("  Nothing was bought.");
}

EventValue::Map ReceiptReport::fieldsOf(const ExplainedPurchase& purchase) const {
    const auto& record = purchase.record;
    EventValue::Map fields{{"transaction", std::to_string(record.transactionID)},
                           {"product", record.productID},
                           {"date", record.purchaseDate}};
    if (purchase.decision) fields.emplace("rule", ruleOf(purchase.decision->kind));
    if (purchase.silence) {
        fields.emplace("silent", tool::describe(*purchase.silence));
        return fields;
    }
    fields.emplace("sent", sentFields(purchase));
    fields.emplace("revenue", *purchase.revenue());
    fields.emplace("currency", purchase.currency);
    return fields;
}

EventValue::List ReceiptReport::sentFields(const ExplainedPurchase& purchase) const {
    EventValue::List list;
    for (const auto& report : purchase.sent()) {
        EventValue::Map fields{
            {"type", tool::describe(report.type)}, {"price", report.price}, {"currency", report.currency}};
        if (!report.event.empty()) fields.emplace("event", report.event);
        if (sinks_ != nullptr) {
            EventValue::List answers;
            for (const auto& answer : answersTo(*sinks_, report.event))
                answers.emplace_back(tool::fieldsOf(answer));
            fields.emplace("sinks", std::move(answers));
        }
        list.emplace_back(std::move(fields));
    }
    return list;
}

void ReceiptReport::printRows(const std::vector<std::string>& lines) {
    for (const auto& line : lines) output_.print("  " + visibleText(line));
}

void ReceiptReport::showProducts() {
    std::vector<Cells> rows;
    for (const auto& [key, total] : summary_.totals()) {
        const auto& [product, currency] = key;
        rows.push_back({product, std::to_string(total.reported) + " of " + std::to_string(total.transactions),
                        total.revenue.description() + " " + currency});
        if (!output_.isJSON()) continue;
        output_.show("product",
                     toJSON(EventValue::Map{{"product", product},
                                            {"currency", currency},
                                            {"transactionCount", total.transactions},
                                            {"reportedCount", total.reported},
                                            {"revenue", total.revenue}}),
                     {});
    }
    if (rows.empty()) return;
    output_.print("\nReported of each product, and the revenue");
    printRows(alignedLines(rows));
}

void ReceiptReport::showMonths() {
    const auto chart = revenueChart(summary_);
    if (!chart.empty()) output_.print("\nRevenue by month");
    printRows(chart);
    if (!output_.isJSON()) return;
    for (const auto& [currency, months] : summary_.months())
        for (const auto& [month, revenue] : months)
            output_.show(
                "month",
                toJSON(EventValue::Map{{"month", month}, {"currency", currency}, {"revenue", revenue}}), {});
}

void ReceiptReport::printSinks() {
    std::vector<Cells> rows;
    for (const auto& event : events_) {
        Cells cells{event.empty() ? "subscription reports" : event};
        for (const auto& answer : answersTo(*sinks_, event)) cells.push_back(tool::describe(answer));
        rows.push_back(std::move(cells));
    }
    if (rows.empty()) return;
    output_.print("\nThe sinks that get them");
    printRows(alignedLines(rows));
}

} // namespace corvantile::tool
