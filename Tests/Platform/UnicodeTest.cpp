#include "Platform/Foundation/Unicode.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace corvantile {
namespace {

using namespace std::string_view_literals;

TEST(Unicode, ReadsOneScalarAtATime) {
    constexpr struct {
        std::string_view text;
        char32_t value;
        std::size_t length;
    } cases[] = {{"\0x"sv, 0, 1},
                 {"\x7Fx"sv, 0x7F, 1},
                 {"\u0080x"sv, 0x80, 2},
                 {"\u07FFx"sv, 0x7FF, 2},
                 {"\u0800x"sv, 0x800, 3},
                 {"\uFFFFx"sv, 0xFFFF, 3},
                 {"\U00010000x"sv, 0x10000, 4},
                 {"\U0010FFFFx"sv, 0x10FFFF, 4}};

    for (const auto& [text, value, length] : cases) {
        const auto scalar = firstScalar(text);
        EXPECT_TRUE(scalar.valid && isUtf8(text)) << text;
        EXPECT_EQ(scalar.value, value);
        EXPECT_EQ(scalar.length, length);
    }
}

TEST(Unicode, StepsOverAMalformedByteAlone) {
    constexpr struct {
        const char* fault;
        std::string_view text;
    } cases[] = {{"lone continuation", "\x80x"sv},        {"lead without an end", "\xE2\x82"sv},
                 {"lead before a letter", "\xC3x"sv},     {"overlong", "\xC0\x80"sv},
                 {"overlong of three", "\xE0\x9F\xBF"sv}, {"surrogate", "\xED\xA0\x80"sv},
                 {"past the last", "\xF4\x90\x80\x80"sv}, {"five bytes", "\xF8\x88\x80\x80\x80"sv}};

    for (const auto& [fault, text] : cases) {
        SCOPED_TRACE(fault);
        EXPECT_FALSE(firstScalar(text).valid);
        EXPECT_EQ(firstScalar(text).length, 1u);
        EXPECT_FALSE(isUtf8(text));
    }
}

TEST(Unicode, EndsTheFirstCharacterWhereAReaderWould) {
    constexpr struct {
        std::string_view character, rest;
    } cases[] = {{"a", "b"},
                 {"\r\n", "\n"},
                 {"\n", "\u0301"},
                 {"e\u0301\u0323", "e"},
                 {"\u2764\uFE0F", "x"},
                 {"\U0001F44D\U0001F3FD", "\U0001F44D"},
                 {"\U0001F468\u200D\U0001F469\u200D\U0001F467", "\U0001F468"},
                 {"\U0001F1E9", "\U0001F1EA"},
                 {"\xFF", "\xFF"}};

    for (const auto& [character, rest] : cases) {
        const auto text = std::string(character).append(rest);
        EXPECT_EQ(firstCharacterLength(text), character.size()) << text;
        EXPECT_EQ(firstCharacterLength(character), character.size()) << character;
    }
}

} // namespace
} // namespace corvantile
