#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

using Cells = std::vector<std::string>;

// Each row as one line, its columns as wide as their widest cells and two blanks apart.
[[nodiscard]] std::vector<std::string> alignedLines(const std::vector<Cells>& rows);

// How wide UTF-8 text is shown, as far as one scalar is one column.
[[nodiscard]] std::size_t widthOf(std::string_view text);

} // namespace corvantile::tool
