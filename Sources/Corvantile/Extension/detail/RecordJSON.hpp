#pragma once

#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"
#include "HostCore/detail/JSON.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// How the records' sources read and write JSON: fields in their order, dates as seconds since 2001, every
// field present and of its own type. For sources only: it brings the JSON library along.
namespace corvantile::recordjson {

using Object = nlohmann::ordered_json;

// What nlohmann throws becomes the framework's own error at this edge.
[[nodiscard]] inline std::string write(const Object& object) {
    try {
        return object.dump();
    } catch (const nlohmann::json::exception& error) {
        throwJSONError(error.what());
    }
}

// JSON has no such numbers, and the library would write null for them.
[[nodiscard]] inline double dateValue(Date date) {
    if (!std::isfinite(date.secondsSinceReference)) throwJSONError("The date to encode is not finite.");
    return date.secondsSinceReference;
}

// nullopt when the text is no JSON object, is nested too deeply, or `build` finds a field missing or of
// another type.
template <class Build>
[[nodiscard]] auto read(std::string_view text, Build build)
    -> std::optional<decltype(build(std::declval<const Object&>()))> {
    const auto object = parseJSON<Object>(text);
    if (!object.is_object()) return std::nullopt;
    try {
        return build(object);
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

// The library would take a number for a boolean and the other way round.
[[nodiscard]] inline bool boolean(const Object& value) { return value.get_ref<const Object::boolean_t&>(); }

[[nodiscard]] inline std::int64_t integer(const Object& value) {
    const auto number = jsonInteger(value);
    if (!number) throw nlohmann::json::type_error::create(302, "not a 64-bit integer", &value);
    return *number;
}

[[nodiscard]] inline Date date(const Object& value) {
    if (!value.is_number()) throw nlohmann::json::type_error::create(302, "a date is a number", &value);
    return {value.get<double>()};
}

} // namespace corvantile::recordjson
