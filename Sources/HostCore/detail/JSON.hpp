#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What every reader and writer of JSON shares. For sources only: it names the JSON library.
namespace corvantile {

// Throws the NSError for a value that JSON cannot hold, or for text that does not hold what it should.
[[noreturn]] CORVANTILE_API void throwJSONError(std::string why);

// A JSON number without a fraction. Beyond 2^53 one that was written with a fraction or an exponent no longer
// identifies the integer, and is rejected.
[[nodiscard]] CORVANTILE_API std::optional<std::int64_t> jsonInteger(const nlohmann::json& value);

// The same as text, read to its end.
[[nodiscard]] CORVANTILE_API std::optional<std::int64_t> textInteger(std::string_view text);

} // namespace corvantile
