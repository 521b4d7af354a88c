#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace corvantile::tool {

namespace {

// A scalar at the beginning of UTF-8 text, or one byte that belongs to none.
struct Scalar {
    std::uint32_t code = 0;
    std::size_t size = 1;
    bool isValid = true;
};

Scalar scalarOf(std::string_view text) {
    const auto byteAt = [text](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const std::uint32_t first = byteAt(0);
    if (first < 0x80) return {first};
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    bool isValid = first >= 0xC2 && first <= 0xF4;
    std::uint32_t code = first & (0x7FU >> size);
    for (std::size_t at = 1; at < size; ++at) {
        isValid = isValid && (byteAt(at) & 0xC0U) == 0x80U;
        code = code << 6U | (byteAt(at) & 0x3FU);
    }
    return isValid ? Scalar{code, size} : Scalar{first, 1, false};
}

// Moves a cursor, ends a line, switches a terminal's mode or turns the direction of what follows: C0 and C1
// controls, line and paragraph separators, marks, embeddings, overrides and isolates of direction.
bool isInvisible(std::uint32_t code) {
    constexpr struct {
        std::uint32_t first, last;
    } ranges[] = {{0, 0x1F},        {0x7F, 0x9F},     {0x61C, 0x61C},
                  {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [code](const auto& range) { return code >= range.first && code <= range.last; });
}

// `format` takes a scalar's number. Everything else stays as it is.
template <class Keeps>
std::string escapedText(std::string_view text, const char* format, Keeps keeps) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const auto [code, size, isValid] = scalarOf(text);
        if ((isValid && !isInvisible(code)) || keeps(code)) {
            out += text.substr(0, size);
        } else {
            char escape[16];
            std::snprintf(escape, sizeof escape, format, static_cast<unsigned>(code));
            out += escape;
        }
        text.remove_prefix(size);
    }
    return out;
}

constexpr const char* braces = "\\u{%02X}";

} // namespace

std::string visibleText(std::string_view text, std::size_t indentation) {
    std::string out;
    for (std::size_t begin = 0;;) {
        const auto end = text.find('\n', begin);
        out += escapedText(text.substr(begin, end - begin), braces,
                           [](std::uint32_t code) { return code == '\t'; });
        if (end == std::string_view::npos) return out;
        out.append(1, '\n').append(indentation, ' ');
        begin = end + 1;
    }
}

std::string visibleLine(std::string_view text) {
    return escapedText(text, braces, [](std::uint32_t) { return false; });
}

std::string visibleJSON(std::string_view json) {
    return escapedText(json, "\\u%04X", [](std::uint32_t code) { return code == '\n'; });
}

std::string shortened(std::string_view text) {
    constexpr std::size_t most = 60;
    if (text.size() <= most) return std::string(text);
    auto end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end; // no half character
    return std::string(text.substr(0, end)) + "… (" + std::to_string(text.size()) + " bytes)";
}

std::vector<std::string> alignedLines(std::vector<Cells> rows) {
    for (auto& row : rows)
        for (auto& cell : row) cell = visibleLine(cell);
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], widthOf(row[column]));
    }
    std::vector<std::string> lines;
    lines.reserve(rows.size());
    for (const auto& row : rows) {
        auto& line = lines.emplace_back();
        for (std::size_t column = 0; column < row.size(); ++column)
            line.append(row[column]).append(widths[column] - widthOf(row[column]) + 2, ' ');
        line.erase(line.find_last_not_of(' ') + 1);
    }
    return lines;
}

std::string joined(std::span<const std::string> texts, std::string_view separator) {
    std::string all;
    for (const auto& text : texts) all.append(all.empty() ? "" : separator).append(text);
    return all;
}

std::size_t widthOf(std::string_view text) {
    const auto begins = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins));
}

} // namespace corvantile::tool
