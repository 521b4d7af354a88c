#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace corvantile {

namespace {

constexpr char32_t zeroWidthJoiner = 0x200D;

struct Lead {
    std::size_t length;
    unsigned char mask;
    char32_t smallest; // below it the encoding is overlong
};

Lead leadOf(unsigned char byte) {
    if (byte < 0x80) return {1, 0x7F, 0};
    if ((byte & 0xE0) == 0xC0) return {2, 0x1F, 0x80};
    if ((byte & 0xF0) == 0xE0) return {3, 0x0F, 0x800};
    if ((byte & 0xF8) == 0xF0) return {4, 0x07, 0x10000};
    return {0, 0, 0};
}

// Nothing joins it, and it joins nothing.
bool isControl(char32_t value) { return value < 0x20 || (value >= 0x7F && value < 0xA0); }

// Of the plain characters at the beginning, eight at a time: nearly all text is nothing else.
std::size_t asciiLength(std::string_view text) {
    std::size_t length = 0;
    for (std::uint64_t eight = 0; text.size() - length >= sizeof eight; length += sizeof eight) {
        std::memcpy(&eight, text.data() + length, sizeof eight);
        if ((eight & 0x8080808080808080U) != 0) break;
    }
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80) ++length;
    return length;
}

bool isScalarValue(char32_t value) { return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF); }

} // namespace

Scalar firstScalar(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    const auto lead = leadOf(first);
    const Scalar malformed{first, 1, false};
    if (lead.length == 0 || text.size() < lead.length) return malformed;
    char32_t value = first & lead.mask;
    for (std::size_t i = 1; i < lead.length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) != 0x80) return malformed;
        value = (value << 6) | (byte & 0x3Fu);
    }
    if (value < lead.smallest || !isScalarValue(value)) return malformed;
    return {value, lead.length, true};
}

bool isUtf8(std::string_view text) {
    for (;;) {
        text.remove_prefix(asciiLength(text));
        if (text.empty()) return true;
        const auto scalar = firstScalar(text);
        if (!scalar.valid) return false;
        text.remove_prefix(scalar.length);
    }
}

bool extendsCharacter(char32_t scalar) {
    static constexpr struct {
        char32_t first, last;
    } ranges[] = {{0x0300, 0x036F},  {0x0483, 0x0489}, {0x0591, 0x05BD},   {0x0610, 0x061A},
                  {0x064B, 0x065F},  {0x093C, 0x093C}, {0x093E, 0x094D},   {0x0E31, 0x0E31},
                  {0x0E34, 0x0E3A},  {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF},
                  {0x200C, 0x200D},  {0x20D0, 0x20FF}, {0x302A, 0x302F},   {0x3099, 0x309A},
                  {0xFE00, 0xFE0F},  {0xFE20, 0xFE2F}, {0x1F3FB, 0x1F3FF}, {0xE0020, 0xE007F},
                  {0xE0100, 0xE01EF}};
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [&](const auto& range) { return scalar >= range.first && scalar <= range.last; });
}

std::size_t firstCharacterLength(std::string_view text) {
    if (text.starts_with("\r\n")) return 2;
    auto scalar = firstScalar(text);
    auto length = scalar.length;
    if (scalar.valid && isControl(scalar.value)) return length;
    while (length < text.size()) {
        const auto next = firstScalar(text.substr(length));
        const bool joined = scalar.value == zeroWidthJoiner && length > scalar.length;
        if (!joined && !extendsCharacter(next.value)) break;
        length += next.length;
        scalar = next;
    }
    return length;
}

} // namespace corvantile
