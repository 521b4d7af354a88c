#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvantile::tool {

// The text with everything escaped that would move a terminal's cursor, but for line feeds, after which as
// many blanks follow.
[[nodiscard]] std::string visibleText(std::string_view text, std::size_t indentation = 0);

// A long text's beginning, and how long it is; any other as it is.
[[nodiscard]] std::string shortened(std::string_view text);

} // namespace corvantile::tool
