#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

using Names = std::vector<std::string>;

// The name that was most likely meant: `text` is its beginning, or has the fewest letters to insert, drop,
// change or swap with a neighbour. Case counts for nothing. Empty when no name is near.
[[nodiscard]] std::string nearestName(std::string_view text, const Names& names);

// `there is no sink "consol"; known: console, backend; did you mean console?`.
[[nodiscard]] std::string unknownName(std::string_view what, std::string_view text, const Names& names);

// `a, b, c`; "none" for no names.
[[nodiscard]] std::string listed(const Names& names);

} // namespace corvantile::tool
