#include "Tools/corvantile/Receipts/Receipts.hpp"

#include "CorvantileIAP/StoreReceipt.hpp"
#include "Platform/Foundation/NSError.hpp"
#include "Tools/corvantile/Faces/JSONLinesFace.hpp"
#include "Tools/corvantile/Faces/VisibleText.hpp"
#include "Tools/corvantile/FileText.hpp"
#include "Tools/corvantile/Receipts/PurchaseExplanation.hpp"
#include "Tools/corvantile/Receipts/ReportedBefore.hpp"
#include "Tools/corvantile/Receipts/RevenueSummary.hpp"
#include "Tools/corvantile/Refusal.hpp"
#include "Tools/corvantile/Store/CatalogueText.hpp"
#include "Tools/corvantile/Values.hpp"

#include <chrono>
#include <optional>
#include <ostream>
#include <utility>

namespace corvantile::tool {

namespace {

Date parseDay(const std::string& text) {
    const auto value = parseValue(text);
    if (const auto* const date = value.as<Date>()) return *date;
    throw Refusal("expected a date, such as 2024-01-02 or 2024-01-02T03:04:05Z, but found \"" + text + "\"");
}

Date moment() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date::fromUnixSeconds(std::chrono::duration<double>(sinceEpoch).count());
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const auto& text : texts) all.append(all.empty() ? "" : "; ").append(text);
    return all;
}

// One receipt after the other, as text or as JSON.
class Report {
public:
    Report(const ReceiptOptions& options, ExplanationContext context, std::ostream& out)
        : options_(options), context_(std::move(context)), out_(out) {}

    void explain(const std::filesystem::path& file) {
        const auto text = readFileText(file, "a receipt as the store's JSON");
        try {
            show(file, readStoreReceipt(text));
        } catch (const NSError& error) {
            hasFailed_ = true;
            showFault(file, error.localizedDescription());
        }
    }

    ExitCode conclude() {
        if (options_.json)
            showTotalsAsJSON();
        else
            showTotals();
        return hasFailed_ ? ExitCode::failed : ExitCode::success;
    }

private:
    void show(const std::filesystem::path& file, const StoreReceipt& receipt) {
        const auto purchases = explainReceipt(receipt, context_);
        for (const auto& purchase : purchases) summary_.add(purchase);
        if (options_.json) {
            for (const auto& purchase : purchases) out_ << jsonText(fieldsOf(file, purchase)) << '\n';
            for (const auto& problem : receipt.problems)
                out_ << jsonText(EventValue::Map{{"file", file.string()}, {"problem", describe(problem)}})
                     << '\n';
            return;
        }
        out_ << visibleText(file.string()) << '\n';
        std::vector<Cells> rows;
        rows.reserve(purchases.size());
        for (const auto& purchase : purchases) rows.push_back(cellsOf(purchase));
        showRows(alignedLines(rows));
        if (rows.empty()) out_ << "  Nothing was bought.\n";
        for (const auto& problem : receipt.problems)
            out_ << "  problem: " << visibleText(describe(problem), 2) << '\n';
    }

    static Cells cellsOf(const ExplainedPurchase& purchase) {
        const auto& record = purchase.record;
        return {describe(record.purchaseDate), std::to_string(record.transactionID), record.productID,
                purchase.decision ? std::string(ruleOf(purchase.decision->kind)) : "",
                purchase.silence ? "silent: " + std::string(tool::describe(*purchase.silence))
                                 : joined(purchase.sent())};
    }

    static EventValue::Map fieldsOf(const std::filesystem::path& file, const ExplainedPurchase& purchase) {
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

    void showFault(const std::filesystem::path& file, const std::string& fault) {
        if (options_.json)
            out_ << jsonText(EventValue::Map{{"file", file.string()}, {"fault", fault}}) << '\n';
        else
            out_ << visibleText("wrong: " + file.string() + ": " + fault) << '\n';
    }

    void showRows(const std::vector<std::string>& lines) {
        for (const auto& line : lines) out_ << "  " << visibleText(line) << '\n';
    }

    void showTotals() {
        std::vector<Cells> rows;
        for (const auto& [key, total] : summary_.totals()) {
            const auto& [product, currency] = key;
            rows.push_back({product,
                            std::to_string(total.reported) + " of " + std::to_string(total.transactions),
                            total.revenue.description() + " " + currency});
        }
        if (rows.empty()) return;
        out_ << "\nReported of each product, and the revenue\n";
        showRows(alignedLines(rows));
        const auto chart = revenueChart(summary_);
        if (!chart.empty()) out_ << "\nRevenue by month\n";
        showRows(chart);
    }

    void showTotalsAsJSON() {
        for (const auto& [key, total] : summary_.totals())
            out_ << jsonText(EventValue::Map{{"total", key.first},
                                             {"currency", key.second},
                                             {"transactions", total.transactions},
                                             {"reported", total.reported},
                                             {"revenue", total.revenue}})
                 << '\n';
        for (const auto& [currency, months] : summary_.months())
            for (const auto& [month, revenue] : months)
                out_ << jsonText(
                            EventValue::Map{{"month", month}, {"currency", currency}, {"revenue", revenue}})
                     << '\n';
    }

    const ReceiptOptions& options_;
    ExplanationContext context_;
    std::ostream& out_;
    RevenueSummary summary_;
    bool hasFailed_ = false;
};

// Runs `act`; a catalogue that is none is said and makes the outcome a failure.
template <class Act>
ExitCode withCatalogue(const std::filesystem::path& file, bool json, std::ostream& out, Act act) {
    Catalogue catalogue;
    try {
        catalogue = readCatalogueFile(file);
    } catch (const NSError& error) {
        const auto& fault = error.localizedDescription();
        out << (json ? jsonText(EventValue::Map{{"fault", fault}}) : visibleText("wrong: " + fault)) << '\n';
        return ExitCode::failed;
    }
    return act(catalogue);
}

} // namespace

ExitCode explainReceipts(const ReceiptOptions& options, std::ostream& out) {
    ReportedBefore before;
    if (!options.state.empty()) before = reportedBefore(options.state);
    if (!options.firstDate.empty()) before.firstDate = parseDay(options.firstDate);
    const auto now = options.now.empty() ? moment() : parseDay(options.now);
    return withCatalogue(options.catalogue, options.json, out, [&](const Catalogue& catalogue) {
        Report report(options,
                      {.catalogue = catalogue,
                       .firstDate = before.firstDate.value_or(DecodingDefaults::invalidDate),
                       .now = now,
                       .marked = std::move(before.marked)},
                      out);
        for (const auto& file : options.receipts) report.explain(file);
        return report.conclude();
    });
}

ExitCode showCatalogue(const std::filesystem::path& file, bool json, std::ostream& out) {
    return withCatalogue(file, json, out, [&](const Catalogue& catalogue) {
        std::vector<Cells> rows;
        for (const auto& product : catalogue.products()) {
            if (json) out << jsonText(fieldsOf(catalogue, product)) << '\n';
            rows.push_back(cellsOf(catalogue, product));
        }
        if (json) return ExitCode::success;
        for (const auto& line : alignedLines(rows)) out << visibleText(line) << '\n';
        if (rows.empty()) out << "The store sells nothing.\n";
        return ExitCode::success;
    });
}

} // namespace corvantile::tool
