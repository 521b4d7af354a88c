#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <cstddef>
#include <string_view>

namespace corvantile {

// How deeply JSON from outside may be nested. Who writes or compares what was parsed recurses, and a text of
// a few hundred kilobytes could use up the stack.
inline constexpr std::size_t greatestJSONDepth = 512;

// Whether lists and objects are nested more deeply than that. To be asked before the text is parsed; where it
// is no JSON, the answer holds for the beginning that a parser reads.
[[nodiscard]] CORVANTILE_API bool isTooDeepJSON(std::string_view text);

// The value, of the JSON library's type; discarded when the text is no JSON or nested too deeply.
template <class JSON>
[[nodiscard]] JSON parseJSON(std::string_view text) {
    return isTooDeepJSON(text) ? JSON(JSON::value_t::discarded) : JSON::parse(text, nullptr, false);
}

} // namespace corvantile
