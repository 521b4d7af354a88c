#include "Platform/Foundation/Console.hpp"

#include <gtest/gtest.h>

#include <string_view>

namespace corvantile {
namespace {

using namespace std::string_view_literals;

constexpr struct {
    std::string_view text;
    std::string_view shown;
} cases[] = {
    {""sv, R"("")"sv},
    {"plain ~ text"sv, R"("plain ~ text")"sv},
    {R"(quote " ' back\slash)"sv, R"("quote \" \' back\\slash")"sv},
    {"a\0b"sv, R"("a\0b")"sv},
    {"\n\r\t"sv, R"("\n\r\t")"sv},
    {"\x01\x1B\x7F"sv, R"("\u{01}\u{1B}\u{7F}")"sv},
    {"caf\u00E9 \u65E5\u672C \U0001F600"sv, "\"caf\u00E9 \u65E5\u672C \U0001F600\""sv},
    // A combining mark keeps to its letter, and is spelt out where it would join the quote or an escape.
    {"e\u0301"sv, "\"e\u0301\""sv},
    {"\u0301e"sv, R"("\u{0301}e")"sv},
    {"\n\u0301\u0301"sv, R"("\n\u{0301}\u{0301}")"sv},
    {"'\U000E0101"sv, R"("\'\u{000E0101}")"sv},
    // Bytes that are no UTF-8 pass through.
    {"a\xFF\xC3"sv, "\"a\xFF\xC3\""sv},
};

TEST(DebugText, QuotesAndEscapes) {
    for (const auto& [text, shown] : cases) EXPECT_EQ(debugText(text), shown);
}

} // namespace
} // namespace corvantile
