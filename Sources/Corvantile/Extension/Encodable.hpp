#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How records become JSON text and get their names. A record takes part by a free function in its namespace,
// `std::string encodeJSON(const Record&)`, which may throw NSError, and by a constant `typeName`.
namespace corvantile {

namespace detail {
// The shortest text that reads back as the same double, whatever the locale: `4.99`, `1.0`, `1e-05`, `inf`,
// `nan`.
[[nodiscard]] CORVANTILE_API std::string realText(double value);
// The same; throws NSError for a number that is not finite.
[[nodiscard]] CORVANTILE_API std::string encodeReal(double value);
} // namespace detail

// Plain values, and lists of whatever takes part. What JSON cannot hold is refused: text that is null or not
// UTF-8, a number that is not finite.
[[nodiscard]] CORVANTILE_API std::string encodeJSON(const std::string& text);
[[nodiscard]] CORVANTILE_API std::string encodeJSON(const char* text);
template <std::same_as<bool> Boolean>
[[nodiscard]] std::string encodeJSON(Boolean value) {
    return value ? "true" : "false";
}
template <std::integral Integer>
requires(!std::same_as<Integer, bool>) [[nodiscard]] std::string encodeJSON(Integer value) {
    return std::to_string(value);
}
template <std::same_as<double> Real>
[[nodiscard]] std::string encodeJSON(Real value) {
    return detail::encodeReal(value);
}

template <class Element>
[[nodiscard]] std::string encodeJSON(const std::vector<Element>& list) {
    std::string json;
    for (const auto& element : list) json.append(json.empty() ? "[" : ",").append(encodeJSON(element));
    return json.empty() ? "[]" : json + "]";
}

template <class T>
concept Encodable = requires(const T& value) {
    { encodeJSON(value) } -> std::same_as<std::string>;
};

namespace detail {
[[nodiscard]] CORVANTILE_API std::optional<std::string> utf8Text(std::string json);
}

// The value's JSON; nullopt when that is not UTF-8. Exceptions of the encoder propagate.
template <Encodable T>
[[nodiscard]] std::optional<std::string> toString(const T& value) {
    return detail::utf8Text(encodeJSON(value));
}

// The name under which a caller stores a record: its unqualified type name.
template <class T>
[[nodiscard]] constexpr std::string_view userDefaultKeyEncodable() {
    return T::typeName;
}

template <class T>
[[nodiscard]] constexpr std::string_view userDefaultKeyDecodable() {
    return T::typeName;
}

} // namespace corvantile
