#include "CorvantilePlay/detail/Text/JSONText.hpp"

#include "CorvantilePlay/detail/Text/TerminalText.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <variant>

namespace corvantile::tool {

namespace {

using JSON = nlohmann::ordered_json;

// Raised by every change that a program can notice in a field that Docs/Tool.md calls stable.
constexpr int formatVersion = 1;

struct ToJSON {
    JSON operator()(EventValue::Null) const { return nullptr; }
    JSON operator()(const std::string& text) const { return text; }
    JSON operator()(const NSDecimalNumber& number) const { return number.description(); }
    JSON operator()(std::int64_t number) const { return number; }
    JSON operator()(double number) const { return number; }
    JSON operator()(bool boolean) const { return boolean; }
    JSON operator()(Date date) const { return isoText(date); }
    JSON operator()(const OpaqueObject& object) const { return object.description; }
    JSON operator()(const EventValue::List& list) const {
        auto json = JSON::array();
        for (const auto& member : list) json.push_back(toJSON(member));
        return json;
    }
    JSON operator()(const EventValue::Map& map) const {
        auto json = JSON::object();
        for (const auto& [key, value] : map) json[key] = toJSON(value);
        return json;
    }
};

} // namespace

std::string dumped(const JSON& json, int indentation) {
    return visibleJSON(json.dump(indentation, ' ', false, JSON::error_handler_t::replace));
}

JSON toJSON(const EventValue& value) { return std::visit(ToJSON(), value.variant()); }

std::string formatLine() {
    return jsonLine("format", {{"format", "corvantile"}, {"version", formatVersion}});
}

std::string jsonLine(std::string_view kind, const JSON& fields) {
    JSON line{{"kind", kind}};
    line.insert(fields.begin(), fields.end());
    return dumped(line);
}

} // namespace corvantile::tool
