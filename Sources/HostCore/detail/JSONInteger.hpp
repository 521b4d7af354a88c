#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string_view>

// For sources only: it names the JSON library. Integers of 64 bits, whole or not at all.
namespace corvantile {

// A JSON number without a fraction. Beyond 2^53 one that was written with a fraction or an exponent no longer
// tells which integer it was, and is none.
[[nodiscard]] CORVANTILE_API std::optional<std::int64_t> jsonInteger(const nlohmann::json& value);

// The same written out as text, of which nothing may be left over.
[[nodiscard]] CORVANTILE_API std::optional<std::int64_t> textInteger(std::string_view text);

} // namespace corvantile
