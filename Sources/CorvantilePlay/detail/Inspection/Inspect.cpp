#include "CorvantilePlay/detail/Inspection/Inspect.hpp"

#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/DesktopOptions.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Inspection/StoredValues.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Text/JSONText.hpp"
#include "CorvantilePlay/detail/Text/PackageText.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"

#include <nlohmann/json.hpp>

#include <string>
#include <system_error>
#include <variant>

namespace corvantile::tool {

namespace {

using JSON = nlohmann::ordered_json;

[[noreturn]] void failMissingState(const std::filesystem::path& folder) {
    std::error_code ignored;
    throw UsageError(
        folder.string() + ": expected an app's state folder, but " +
        (std::filesystem::exists(folder, ignored) ? "this is no folder" : "there is nothing of that name") +
        "; play makes one, --state FOLDER names another, --app FOLDER another app");
}

JSON fieldsOf(const StoredValue& value) {
    JSON fields{{"name", value.name}, {"bytes", value.size}};
    if (value.json) fields[value.isRecord ? "record" : "value"] = parseJSON<JSON>(*value.json);
    if (!value.fault.empty()) fields["error"] = value.fault;
    return fields;
}

std::string textLines(const StoredValue& value) {
    auto text = visibleLine(value.name) + "  " + std::to_string(value.size) + " bytes" +
                (value.isRecord ? "" : ", plain");
    if (value.json) text += "\n" + dumped(parseJSON<JSON>(*value.json), 2);
    if (!value.fault.empty()) text += "\nwrong: " + value.fault;
    return visibleText(text, 2);
}

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
    auto text = visibleLine(entry.service) + "  " + visibleLine(entry.account);
    if (!entry.fault.empty()) text += "\nwrong: " + entry.fault;
    const auto values = entry.dictionary ? valuesOf(*entry.dictionary, reveal) : JSON::object();
    for (const auto& [key, value] : values.items())
        text += "\n" + visibleLine(key) + ": " + value["type"].get<std::string>() +
                (reveal ? " " + dumped(value["value"]) : "");
    return visibleText(text, 2);
}

std::string textLines(const OutboxEntry& package) {
    return describe(package.created) + "  " + visibleLine(package.identifier) + "\n  " +
           visibleLine(describe(package));
}

} // namespace

std::filesystem::path inspectedFolder(const InspectOptions& options, const PlayRegistry& registry) {
    auto folder = options.state;
    if (folder.empty()) folder = defaultStateFolder(readApp(options.app, registry).bundleIdentifier);
    std::error_code ignored; // what we may not look at is as good as missing
    if (!std::filesystem::is_directory(folder, ignored)) failMissingState(folder);
    return folder;
}

ExitCode showRecords(const InspectOptions& options, const PlayRegistry& registry, CommandOutput& output) {
    const auto [values, error] =
        readStoredValues(StateCopy(inspectedFolder(options, registry)), registry.records());
    for (const auto& value : values) {
        output.show("record", fieldsOf(value), textLines(value));
        if (!value.fault.empty()) output.noteError(value.name + ": " + value.fault);
    }
    if (!error.empty())
        output.showError("user defaults: " + error, JSON::object());
    else if (values.empty())
        output.print("There are no records.");
    return output.end();
}

ExitCode showKeychain(const InspectOptions& options, const PlayRegistry& registry, CommandOutput& output) {
    const StateCopy state(inspectedFolder(options, registry));
    const auto inspection = Vault(state.keychain()).inspect();
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

ExitCode showOutbox(const InspectOptions& options, const PlayRegistry& registry, CommandOutput& output) {
    const StateCopy state(inspectedFolder(options, registry));
    const auto inspection = OutboxAdjust::inspect(state.outbox());
    const auto copyError = state.faultOf("outbox");
    const auto& error = copyError.empty() ? inspection.fault : copyError;
    for (const auto& package : inspection.packages)
        output.show("package", toJSON(fieldsOf(package)), textLines(package));
    if (!error.empty())
        output.showError("outbox: " + error, JSON::object());
    else if (inspection.packages.empty())
        output.print("The outbox is empty.");
    return output.end();
}

} // namespace corvantile::tool
