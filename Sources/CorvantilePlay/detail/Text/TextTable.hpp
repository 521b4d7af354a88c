#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

using Cells = std::vector<std::string>;

// Each row as one line, its columns as wide as their widest cells and two blanks apart.
[[nodiscard]] std::vector<std::string> alignedLines(const std::vector<Cells>& rows);

[[nodiscard]] std::string joined(std::span<const std::string> texts, std::string_view separator);

// How wide UTF-8 text is shown, as far as one scalar is one column.
[[nodiscard]] std::size_t widthOf(std::string_view text);

} // namespace corvantile::tool
