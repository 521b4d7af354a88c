#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Text/JSONText.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"
#include "CorvantilePlay/detail/Text/VisibleText.hpp"

#include <nlohmann/json.hpp>

#include <string>
#include <variant>

namespace corvantile::tool {

namespace {

using JSON = nlohmann::ordered_json;

struct Described {
    const char* type;
    JSON value;
};

struct Describe {
    Described operator()(const std::string& text) const { return {"text", text}; }
    Described operator()(bool boolean) const { return {"boolean", boolean}; }
    Described operator()(std::int64_t number) const { return {"integer", number}; }
    Described operator()(double number) const { return {"real", number}; }
    Described operator()(Date date) const { return {"date", isoText(date)}; }
    Described operator()(const KeychainData& data) const {
        return {"data", base64({reinterpret_cast<const char*>(data.data()), data.size()})};
    }
};

JSON valuesOf(const KeychainDictionary& dictionary, bool reveal) {
    auto values = JSON::object();
    for (const auto& [key, value] : dictionary) {
        auto [type, shown] = std::visit(Describe(), value.variant());
        values[key] = {{"type", type}};
        if (reveal) values[key]["value"] = std::move(shown);
    }
    return values;
}

JSON fieldsOf(const VaultInspection::Entry& entry, bool reveal) {
    JSON fields{{"service", entry.service}, {"account", entry.account}};
    if (entry.dictionary) fields["values"] = valuesOf(*entry.dictionary, reveal);
    if (!entry.fault.empty()) fields["error"] = entry.fault;
    return fields;
}

std::string textLines(const VaultInspection::Entry& entry, bool reveal) {
    auto text = entry.service + "  " + entry.account;
    if (!entry.fault.empty()) text += "\nwrong: " + entry.fault;
    const auto values = entry.dictionary ? valuesOf(*entry.dictionary, reveal) : JSON::object();
    for (const auto& [key, value] : values.items())
        text += "\n" + key + ": " + value["type"].get<std::string>() +
                (reveal ? " " + dumped(value["value"]) : "");
    return visibleText(text, 2);
}

} // namespace

ExitCode showKeychain(const InspectOptions& options, const PlayRegistry& registry, CommandOutput& output) {
    const StateCopy state(inspectedFolder(options, registry));
    const auto inspection = Vault({.folder = state.keychain()}).inspect();
    for (const auto& entry : inspection.entries) {
        output.show("entry", fieldsOf(entry, options.reveal), textLines(entry, options.reveal));
        if (!entry.dictionary)
            output.noteError("keychain entry " + entry.account + " of " + entry.service + ": " + entry.fault);
    }
    for (const auto& error : inspection.faults) output.showError(error, JSON::object());
    for (const auto& [file, error] : state.faults())
        if (file.starts_with("keychain")) output.showError(file + ": " + error, JSON::object());
    if (inspection.entries.empty() && !output.hasFailed()) output.print("The keychain is empty.");
    return output.end();
}

} // namespace corvantile::tool
