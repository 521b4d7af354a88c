#include "CorvantilePlatform/Foundation/Console.hpp"

#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"

#include <cstddef>

namespace corvantile {

namespace {

void appendHex(std::string& out, char32_t value, int digits) {
    static constexpr std::string_view hex = "0123456789ABCDEF";
    out += "\\u{";
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        out += hex[static_cast<std::size_t>((value >> shift) & 0xF)];
    out += '}';
}

// True when what was appended is an escape, so that a combining mark must not follow it bare.
bool appendAscii(std::string& out, char32_t value) {
    switch (value) {
    case U'\\': out += "\\\\"; return true;
    case U'\'': out += "\\'"; return true;
    case U'"': out += "\\\""; return true;
    case U'\0': out += "\\0"; return true;
    case U'\n': out += "\\n"; return true;
    case U'\r': out += "\\r"; return true;
    case U'\t': out += "\\t"; return true;
    }
    if (value < 0x20 || value == 0x7F) {
        appendHex(out, value, 2);
        return true;
    }
    out += static_cast<char>(value);
    return false;
}

} // namespace

Console::~Console() = default;

void Console::debugPrint(std::string_view text) { print(debugText(text)); }

std::string debugText(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 8 + 2);
    out += '"';
    bool afterEscape = true; // the opening quote counts
    while (!text.empty()) {
        const auto scalar = firstScalar(text);
        if (scalar.valid && scalar.value < 0x80) {
            afterEscape = appendAscii(out, scalar.value);
        } else if (afterEscape && scalar.valid && extendsCharacter(scalar.value)) {
            appendHex(out, scalar.value, scalar.value > 0xFFFF ? 8 : 4);
        } else {
            out.append(text.substr(0, scalar.length));
            afterEscape = false;
        }
        text.remove_prefix(scalar.length);
    }
    out += '"';
    return out;
}

} // namespace corvantile
