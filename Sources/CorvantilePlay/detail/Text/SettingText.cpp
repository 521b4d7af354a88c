#include "CorvantilePlay/detail/Text/SettingText.hpp"

#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

namespace corvantile::tool {

namespace {

bool booleanOf(const std::string& field, const EventValue& value) {
    if (const auto* const boolean = value.as<bool>()) return *boolean;
    throw UsageError(field + ": expected true or false, but found " + value.description());
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> listOf(const std::string& text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    try {
        return json.get<std::vector<std::string>>();
    } catch (const nlohmann::json::exception&) {
        throw UsageError("iapPolicy: expected a JSON list of texts, but found " + text);
    }
}

std::vector<std::string> policyOf(const EventValue& value) {
    const auto* const text = value.as<std::string>();
    if (text == nullptr)
        throw UsageError(
            "iapPolicy: expected a text, in quotes if need be, or a JSON list of texts, but found " +
            value.description());
    return text->starts_with('[') ? listOf(*text) : linesOf(*text);
}

} // namespace

Setting changedSetting(Setting setting, const EventParameters& fields) {
    if (fields.empty()) throw UsageError("expected KEY=VALUE, such as reviewAppEnabled=false");
    for (const auto& [field, value] : fields) {
        if (field == "iapPolicy")
            setting.iapPolicy = policyOf(value);
        else if (field == "manageSubscriptionEnabled")
            setting.manageSubscriptionEnabled = booleanOf(field, value);
        else if (field == "reviewAppEnabled")
            setting.reviewAppEnabled = booleanOf(field, value);
        else
            throw UsageError(unknownName("setting", field,
                                         {"iapPolicy", "manageSubscriptionEnabled", "reviewAppEnabled"}));
    }
    return setting;
}

} // namespace corvantile::tool
