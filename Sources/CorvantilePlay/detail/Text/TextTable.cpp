#include "CorvantilePlay/detail/Text/TextTable.hpp"

#include <algorithm>

namespace corvantile::tool {

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
