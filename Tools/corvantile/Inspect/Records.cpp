#include "Tools/corvantile/Faces/VisibleText.hpp"
#include "Tools/corvantile/Inspect/Inspect.hpp"
#include "Tools/corvantile/Inspect/StateCopy.hpp"
#include "Tools/corvantile/Inspect/StoredValues.hpp"
#include "Tools/corvantile/JSONText.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <ostream>
#include <string>

namespace corvantile::tool {

namespace {

using JSON = nlohmann::ordered_json;

std::string jsonLine(const StoredValue& value) {
    JSON line{{"name", value.name}, {"bytes", value.size}};
    if (value.json) line[value.isRecord ? "record" : "value"] = JSON::parse(*value.json, nullptr, false);
    if (!value.fault.empty()) line["fault"] = value.fault;
    return dumped(line);
}

std::string textLines(const StoredValue& value) {
    auto text = value.name + "  " + std::to_string(value.size) + " bytes" + (value.isRecord ? "" : ", plain");
    if (value.json) text += "\n" + dumped(JSON::parse(*value.json, nullptr, false), 2);
    if (!value.fault.empty()) text += "\nwrong: " + value.fault;
    return visibleText(text, 2);
}

} // namespace

ExitCode showRecords(const InspectOptions& options, std::ostream& out) {
    const auto [values, fault] = readStoredValues(StateCopy(options.state));
    for (const auto& value : values) out << (options.json ? jsonLine(value) : textLines(value)) << '\n';
    if (!fault.empty())
        out << (options.json ? dumped({{"fault", fault}}) : "wrong: user defaults: " + fault) << '\n';
    else if (values.empty() && !options.json)
        out << "There are no records.\n";
    const bool allRead = std::all_of(values.begin(), values.end(),
                                     [](const StoredValue& value) { return value.fault.empty(); });
    return allRead && fault.empty() ? ExitCode::success : ExitCode::failed;
}

} // namespace corvantile::tool
