#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

// Everything that the tool prints passes through one of these: what would move a terminal's cursor, change
// its mode or turn the direction of text is escaped, as `\u{1B}`, and so are bytes that are not UTF-8.
// Escaping twice changes nothing more.

// Keeps tabs and line feeds; as many blanks follow each line feed, so that no text begins a row of its own.
[[nodiscard]] std::string visibleText(std::string_view text, std::size_t indentation = 0);
// One line: tabs and line feeds are escaped as well.
[[nodiscard]] std::string visibleLine(std::string_view text);
// The same JSON, whose texts hold what JSON itself lets pass as `\u202E`.
[[nodiscard]] std::string visibleJSON(std::string_view json);

// A long text's beginning, and how long it is; any other as it is.
[[nodiscard]] std::string shortened(std::string_view text);

using Cells = std::vector<std::string>;

// Each row as one visible line, its columns as wide as their widest cells and two blanks apart.
[[nodiscard]] std::vector<std::string> alignedLines(std::vector<Cells> rows);

[[nodiscard]] std::string joined(std::span<const std::string> texts, std::string_view separator);

// How wide UTF-8 text is shown, as far as one scalar is one column.
[[nodiscard]] std::size_t widthOf(std::string_view text);

} // namespace corvantile::tool
