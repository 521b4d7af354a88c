#include "Tools/corvantile/Receipts/Receipts.hpp"

#include "DesktopPlatform/Foundation/SystemClock.hpp"
#include "Platform/Foundation/NSError.hpp"
#include "Tools/corvantile/Faces/JSONLinesFace.hpp"
#include "Tools/corvantile/Faces/VisibleText.hpp"
#include "Tools/corvantile/Misread.hpp"
#include "Tools/corvantile/Receipts/ReceiptReport.hpp"
#include "Tools/corvantile/Receipts/ReportedBefore.hpp"
#include "Tools/corvantile/Store/CatalogueText.hpp"
#include "Tools/corvantile/Values.hpp"

#include <ostream>
#include <utility>

namespace corvantile::tool {

namespace {

Date parseDay(const std::string& text) {
    const auto value = parseValue(text);
    if (const auto* const date = value.as<Date>()) return *date;
    throw misread("a date, such as 2024-01-02 or 2024-01-02T03:04:05Z", text);
}

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
    const auto now = options.now.empty() ? SystemClock().now() : parseDay(options.now);
    return withCatalogue(options.catalogue, options.json, out, [&](const Catalogue& catalogue) {
        ReceiptReport report({.catalogue = catalogue,
                              .firstDate = before.firstDate.value_or(DecodingDefaults::invalidDate),
                              .now = now,
                              .marked = std::move(before.marked)},
                             options.json, out);
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
