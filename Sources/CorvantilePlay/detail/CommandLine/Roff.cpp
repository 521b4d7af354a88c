#include "CorvantilePlay/detail/CommandLine/Roff.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace corvantile::tool {

namespace {

// How many bytes the UTF-8 character takes that begins so.
std::size_t lengthOf(char first) {
    const auto byte = static_cast<std::uint8_t>(first);
    if (byte < 0x80) return 1;
    return byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
}

// By its number, so that the page reads the same whatever encoding the reader's roff expects.
std::string escapedCodePoint(std::string_view character) {
    std::uint32_t code = static_cast<std::uint8_t>(character.front()) & (0xFFU >> (character.size() + 1));
    for (const char byte : character.substr(1)) code = code << 6U | (static_cast<std::uint8_t>(byte) & 0x3FU);
    char text[16];
    std::snprintf(text, sizeof text, "\\[u%04X]", code);
    return text;
}

std::string escaped(std::string_view text) {
    std::string roff;
    for (std::size_t at = 0; at < text.size();) {
        const auto character = text.substr(at, lengthOf(text[at]));
        at += character.size();
        if (character.size() > 1)
            roff += escapedCodePoint(character);
        else if (character == "\\")
            roff += "\\e";
        else if (character == "-") // a plain one may be set as a hyphen, which cannot be copied into a shell
            roff += "\\-";
        else if (character == "\"") // it ends a macro's argument
            roff += "\\(dq";
        else if (character == "'")
            roff += "\\(aq";
        else if (character == "`")
            roff += "\\(ga";
        else
            roff += character == "\n" ? " " : character;
    }
    // A control line begins with a point.
    return roff.starts_with('.') ? "\\&" + roff : roff;
}

} // namespace

void Roff::macro(std::string_view name, std::string_view argument) {
    roff_.append(".").append(name).append(" \"").append(escaped(argument)).append("\"\n");
}

void Roff::title(std::string_view name, std::string_view source) {
    std::string upper(name);
    for (auto& letter : upper)
        if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    roff_ += ".TH \"" + escaped(upper) + "\" 1 \"\" \"" + escaped(source) + "\" \"User Commands\"\n";
    roff_ += ".nh\n.ad l\n"; // an option that is broken at a hyphen cannot be copied
}

void Roff::section(std::string_view name) { macro("SH", name); }

void Roff::subsection(std::string_view name) { macro("SS", name); }

void Roff::text(std::string_view text) { roff_ += escaped(text) + "\n"; }

void Roff::bold(std::string_view text) { macro("B", text); }

void Roff::lineBreak() { roff_ += ".br\n"; }

void Roff::item(std::string_view tag, std::string_view meaning) {
    roff_ += ".TP\n";
    bold(tag);
    text(meaning);
}

} // namespace corvantile::tool
