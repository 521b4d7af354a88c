#include "CorvantilePlay/detail/Receipts/Receipts.hpp"

#include "CorvantileDesktop/Foundation/detail/SystemClock.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Kinds/Kinds.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Receipts/AppSinks.hpp"
#include "CorvantilePlay/detail/Receipts/ReceiptReport.hpp"
#include "CorvantilePlay/detail/Text/CatalogueText.hpp"
#include "CorvantilePlay/detail/Text/JSONText.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace corvantile::tool {

namespace {

// What the keychain of an app remembers for purchase analytics.
struct ReportedBefore {
    std::set<std::string> marked{}; // accounts of markers
    std::optional<Date> firstDate{};
};

// As analytics does: an entry with a value of another kind is no marker.
bool isMarker(const KeychainDictionary& entry) {
    return std::all_of(entry.begin(), entry.end(),
                       [](const auto& member) { return member.second.template as<bool>() != nullptr; });
}

std::optional<Date> firstDateIn(const VaultInspection::Entry& entry) {
    if (entry.account != "firstDate") return std::nullopt;
    const auto found = entry.dictionary->find("firstDate");
    const auto* const date = found == entry.dictionary->end() ? nullptr : found->second.as<Date>();
    return date == nullptr ? std::nullopt : std::optional(*date);
}

// Reads a copy of the keychain in a state folder. A UsageError when there is no such folder, or no copy can
// be made.
ReportedBefore reportedBefore(const std::filesystem::path& stateFolder) {
    const StateCopy state(stateFolder);
    if (const auto fault = state.faultOf("keychain"); !fault.empty())
        throw UsageError(stateFolder.string() + ": the keychain: " + fault);
    ReportedBefore before;
    for (const auto& entry : Vault(state.keychain()).inspect().entries) {
        if (!entry.dictionary) continue;
        if (isMarker(*entry.dictionary)) before.marked.insert(entry.account);
        if (const auto date = firstDateIn(entry)) before.firstDate = date;
    }
    return before;
}

Date parseDay(const std::string& text) {
    const auto value = parseValue(text);
    if (const auto* const date = value.as<Date>()) return *date;
    throw unexpectedValue("a date, such as 2024-01-02 or 2024-01-02T03:04:05Z", text);
}

std::optional<AppDescription> readReportingApp(const std::filesystem::path& folder,
                                               const PlayRegistry& registry) {
    if (folder.empty()) return std::nullopt;
    auto app = readAppDescription(folder, registry);
    for (const auto* const plugIn : {"IAPReceiptPlugin", "IAPReceiptTrackingPlugin"})
        if (!app.hasPlugIn(plugIn))
            throw UsageError((folder / "app.json").string() + ": the app reports no purchase: it has no " +
                             plugIn);
    return app;
}

std::filesystem::path catalogueFile(const ReceiptOptions& options, const std::optional<AppDescription>& app) {
    if (!options.catalogue.empty()) return options.catalogue;
    if (app && app->hasStore()) return app->store.catalogue;
    throw UsageError(app ? (options.app / "app.json").string() +
                               ": the app names no catalogue, a store's; --catalogue FILE names one"
                         : "receipts wants the products: --app FOLDER of an app, or --catalogue FILE");
}

// An error of the output when it is no catalogue.
std::optional<Catalogue> read(const std::filesystem::path& file, CommandOutput& output) {
    try {
        return readCatalogueFile(file);
    } catch (const NSError& error) {
        output.showError(error.localizedDescription(), {{"file", file.string()}});
        return std::nullopt;
    }
}

// Those that the app lists; without an app, all that are sold.
std::vector<ReceiptProduct> productsOf(const Catalogue& catalogue, const std::optional<AppDescription>& app) {
    std::vector<ReceiptProduct> products;
    if (!app)
        for (const auto& sold : catalogue.products())
            products.push_back({sold.identifier, {}, makeProduct(catalogue, sold)});
    if (const auto* const plugIn = app ? app->plugIn("IAPReceiptPlugin") : nullptr)
        for (const auto& [identifier, category] : readReceiptProducts(plugIn->configuration)) {
            const auto* const sold = catalogue.product(identifier);
            products.push_back(
                {identifier, category, sold == nullptr ? nullptr : makeProduct(catalogue, *sold)});
        }
    return products;
}

} // namespace

ExitCode explainReceipts(const ReceiptOptions& options, const PlayRegistry& registry, CommandOutput& output) {
    ReportedBefore before;
    if (!options.state.empty()) before = reportedBefore(options.state);
    if (!options.firstDate.empty()) before.firstDate = parseDay(options.firstDate);
    const auto now = options.now.empty() ? SystemClock().now() : parseDay(options.now);
    const auto app = readReportingApp(options.app, registry);
    const auto catalogue = read(catalogueFile(options, app), output);
    if (!catalogue) return output.end();
    std::optional<AppSinks> sinks;
    if (app) sinks.emplace(*app);
    ReceiptReport report({.products = productsOf(*catalogue, app),
                          .ofOthers = app ? Silence::notListed : Silence::notSold,
                          .firstDate = before.firstDate.value_or(DecodingDefaults::invalidDate),
                          .now = now,
                          .marked = std::move(before.marked)},
                         sinks ? &*sinks : nullptr, output);
    for (const auto& file : options.receipts) report.explain(file);
    report.showTotals();
    return output.end();
}

ExitCode showCatalogue(const std::filesystem::path& file, CommandOutput& output) {
    const auto catalogue = read(file, output);
    if (!catalogue) return output.end();
    std::vector<Cells> rows;
    for (const auto& product : catalogue->products()) rows.push_back(cellsOf(*catalogue, product));
    const auto lines = alignedLines(rows);
    for (std::size_t row = 0; row < lines.size(); ++row)
        output.show("product", toJSON(fieldsOf(*catalogue, catalogue->products()[row])),
                    visibleText(lines[row]));
    if (rows.empty()) output.print("The store sells nothing.");
    return output.end();
}

} // namespace corvantile::tool
