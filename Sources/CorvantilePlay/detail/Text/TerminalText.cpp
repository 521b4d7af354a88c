#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <algorithm>
#include <cstdio>

namespace corvantile::tool {

std::string visibleText(std::string_view text, std::size_t indentation) {
    std::string out;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '\n') {
            out.append(1, '\n').append(indentation, ' ');
        } else if ((code < 0x20 && character != '\t') || code == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u{%02X}", code);
            out += escape;
        } else {
            out += character;
        }
    }
    return out;
}

std::string shortened(std::string_view text) {
    constexpr std::size_t most = 60;
    if (text.size() <= most) return std::string(text);
    auto end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end; // no half character
    return std::string(text.substr(0, end)) + "… (" + std::to_string(text.size()) + " bytes)";
}

std::vector<std::string> alignedLines(const std::vector<Cells>& rows) {
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
