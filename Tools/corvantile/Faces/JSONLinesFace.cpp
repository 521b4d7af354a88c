#include "Tools/corvantile/Faces/JSONLinesFace.hpp"

#include "Tools/corvantile/JSONText.hpp"

#include <nlohmann/json.hpp>

#include <ostream>
#include <variant>

namespace corvantile::tool {

namespace {

using JSON = nlohmann::ordered_json;

JSON toJSON(const EventValue& value);

struct ToJSON {
    JSON operator()(EventValue::Null) const { return nullptr; }
    JSON operator()(const std::string& text) const { return text; }
    JSON operator()(const NSDecimalNumber& number) const { return number.description(); }
    JSON operator()(std::int64_t number) const { return number; }
    JSON operator()(double number) const { return number; }
    JSON operator()(bool boolean) const { return boolean; }
    JSON operator()(Date date) const { return describe(date); }
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

JSON toJSON(const EventValue& value) { return std::visit(ToJSON(), value.variant()); }

} // namespace

std::string jsonLine(const Happening& happening) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(happening.time).count();
    JSON json{{"time", static_cast<double>(milliseconds) / 1000},
              {"who", happening.who},
              {"kind", happening.kind},
              {"text", happening.text}};
    if (!happening.fields.empty()) json["fields"] = toJSON(happening.fields);
    return dumped(json);
}

std::string jsonText(const EventValue& value) { return dumped(toJSON(value)); }

JSONLinesFace::JSONLinesFace(std::ostream& stream) : stream_(stream) {}

JSONLinesFace::~JSONLinesFace() = default;

void JSONLinesFace::show(const Happening& happening) { stream_ << jsonLine(happening) << std::endl; }

void JSONLinesFace::invite() {}

void JSONLinesFace::answered() {}

} // namespace corvantile::tool
