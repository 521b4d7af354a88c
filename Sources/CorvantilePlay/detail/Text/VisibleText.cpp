#include "CorvantilePlay/detail/Text/VisibleText.hpp"

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

} // namespace corvantile::tool
