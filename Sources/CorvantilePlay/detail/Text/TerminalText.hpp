#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

// The text with everything escaped that would move a terminal's cursor, but for line feeds, after which as
// many blanks follow.
[[nodiscard]] std::string visibleText(std::string_view text, std::size_t indentation = 0);

// A long text's beginning, and how long it is; any other as it is.
[[nodiscard]] std::string shortened(std::string_view text);

using Cells = std::vector<std::string>;

// Each row as one line, its columns as wide as their widest cells and two blanks apart.
[[nodiscard]] std::vector<std::string> alignedLines(const std::vector<Cells>& rows);

[[nodiscard]] std::string joined(std::span<const std::string> texts, std::string_view separator);

// How wide UTF-8 text is shown, as far as one scalar is one column.
[[nodiscard]] std::size_t widthOf(std::string_view text);

} // namespace corvantile::tool
