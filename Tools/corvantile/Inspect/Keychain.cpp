#include "DesktopPlatform/Keychain/Vault.hpp"
#include "Platform/Foundation/Base64.hpp"
#include "Tools/corvantile/Faces/VisibleText.hpp"
#include "Tools/corvantile/Inspect/Inspect.hpp"
#include "Tools/corvantile/Inspect/StateCopy.hpp"
#include "Tools/corvantile/JSONText.hpp"

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>
#include <variant>

namespace corvantile::tool {

namespace {

using JSON = nlohmann::ordered_json;

struct Described {
    const char* kind;
    JSON value;
};

struct Describe {
    Described operator()(const std::string& text) const { return {"text", text}; }
    Described operator()(bool boolean) const { return {"boolean", boolean}; }
    Described operator()(std::int64_t number) const { return {"integer", number}; }
    Described operator()(double number) const { return {"real", number}; }
    Described operator()(Date date) const { return {"date", describe(date)}; }
    Described operator()(const KeychainData& data) const {
        return {"data", base64({reinterpret_cast<const char*>(data.data()), data.size()})};
    }
};

JSON valuesOf(const KeychainDictionary& dictionary, bool reveal) {
    auto values = JSON::object();
    for (const auto& [key, value] : dictionary) {
        auto [kind, shown] = std::visit(Describe(), value.variant());
        values[key] = {{"kind", kind}};
        if (reveal) values[key]["value"] = std::move(shown);
    }
    return values;
}

std::string jsonLine(const VaultInspection::Entry& entry, bool reveal) {
    JSON line{{"service", entry.service}, {"account", entry.account}};
    if (entry.dictionary) line["values"] = valuesOf(*entry.dictionary, reveal);
    if (!entry.fault.empty()) line["fault"] = entry.fault;
    return dumped(line);
}

std::string textLines(const VaultInspection::Entry& entry, bool reveal) {
    auto text = entry.service + "  " + entry.account;
    if (!entry.fault.empty()) text += "\nwrong: " + entry.fault;
    const auto values = entry.dictionary ? valuesOf(*entry.dictionary, reveal) : JSON::object();
    for (const auto& [key, value] : values.items())
        text += "\n" + key + ": " + value["kind"].get<std::string>() +
                (reveal ? " " + dumped(value["value"]) : "");
    return visibleText(text, 2);
}

} // namespace

ExitCode showKeychain(const InspectOptions& options, std::ostream& out) {
    const StateCopy state(options.state);
    auto inspection = Vault({.folder = state.keychain()}).inspect();
    for (const auto& fault : state.faults())
        if (fault.file.starts_with("keychain")) inspection.faults.push_back(fault.file + ": " + fault.text);
    bool isWhole = inspection.faults.empty();
    for (const auto& entry : inspection.entries) {
        out << (options.json ? jsonLine(entry, options.reveal) : textLines(entry, options.reveal)) << '\n';
        isWhole = isWhole && entry.dictionary.has_value();
    }
    for (const auto& fault : inspection.faults)
        out << (options.json ? dumped({{"fault", fault}}) : "wrong: " + visibleText(fault)) << '\n';
    if (inspection.entries.empty() && isWhole && !options.json) out << "The keychain is empty.\n";
    return isWhole ? ExitCode::success : ExitCode::failed;
}

} // namespace corvantile::tool
