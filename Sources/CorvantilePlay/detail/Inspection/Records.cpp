#include "CorvantilePlay/PlayRegistry.hpp"
#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Inspection/StoredValues.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Text/JSONText.hpp"
#include "CorvantilePlay/detail/Text/VisibleText.hpp"

#include <nlohmann/json.hpp>

#include <string>

namespace corvantile::tool {

namespace {

using JSON = nlohmann::ordered_json;

JSON fieldsOf(const StoredValue& value) {
    JSON fields{{"name", value.name}, {"bytes", value.size}};
    if (value.json) fields[value.isRecord ? "record" : "value"] = JSON::parse(*value.json, nullptr, false);
    if (!value.fault.empty()) fields["error"] = value.fault;
    return fields;
}

std::string textLines(const StoredValue& value) {
    auto text = value.name + "  " + std::to_string(value.size) + " bytes" + (value.isRecord ? "" : ", plain");
    if (value.json) text += "\n" + dumped(JSON::parse(*value.json, nullptr, false), 2);
    if (!value.fault.empty()) text += "\nwrong: " + value.fault;
    return visibleText(text, 2);
}

} // namespace

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

} // namespace corvantile::tool
