#pragma once

#include "Platform/Export.hpp"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

// How records become JSON text and get their names. A record takes part by a free function in its namespace,
// `std::string encodeJSON(const Record&)`, which may throw NSError, and by a constant `typeName`.
namespace corvantile {

// A JSON string.
[[nodiscard]] CORVANTILE_API std::string encodeJSON(const std::string& text);

template <class T>
concept Encodable = requires(const T& value) {
    { encodeJSON(value) } -> std::same_as<std::string>;
};

namespace detail {
[[nodiscard]] CORVANTILE_API std::optional<std::string> utf8Text(std::string json);
}

// The value's JSON; nullopt when that is no UTF-8 text. What the encoder throws goes on.
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
