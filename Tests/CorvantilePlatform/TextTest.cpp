#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

namespace corvantile::TextTest {

using namespace std::string_literals;
using namespace std::string_view_literals;

TEST(Base64, WritesAndReadsThePublishedExamples) {
    const std::pair<std::string, std::string_view> cases[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foobar", "Zm9vYmFy"},
        {"\0\x10\x83\x10\x51\x87\x20\x92\x8b"s, "ABCDEFGHIJKL"},
        {"\xfb\xff\xbf\xff"s, "+/+//w=="}};
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(base64(bytes), text);
        EXPECT_EQ(base64Lines(bytes), text);
        EXPECT_EQ(bytesOfBase64(text), bytes);
    }
}

TEST(Base64, BreaksLinesAfter64CharactersButNotAfterTheLast) {
    const std::string line(64, 'A');
    const std::pair<std::size_t, std::string> cases[] = {{47, line.substr(1).append("=")},
                                                         {48, line},
                                                         {49, line + "\r\nAA=="},
                                                         {96, line + "\r\n" + line},
                                                         {97, line + "\r\n" + line + "\r\nAA=="}};
    for (const auto& [zeroBytes, text] : cases) EXPECT_EQ(base64Lines(std::string(zeroBytes, '\0')), text);
}

TEST(Base64, SkipsWhatIsNotInTheAlphabetWhereverItStands) {
    for (const auto text : {"Zm9vYmE=\n", " Zm9vYmE=", "Zm9v\r\nYmE=", "Z-m_9.v*YmE=", "Zm9vYmE\xC3\xA4=",
                            "Zm9vY\nmE=", "Zm9vYm\n\n\nE\n=\n"})
        EXPECT_EQ(bytesOfBase64(text), "fooba") << text;
    EXPECT_EQ(bytesOfBase64("Zm\0 9v"s), "foo");
    EXPECT_EQ(bytesOfBase64("\r\n .-_"), "");
}

TEST(Base64, RefusesWhatCannotBeWholeButIgnoresBitsThatFillNoByte) {
    for (const auto text :
         {"Z", "Zm", "Zm9", "Zm9vY", "Zm9vYg=", "Zm9v=", "Zm9v====", "=", "Z===", "Zg==Zg==", "Zg=a", "Zm=8"})
        EXPECT_EQ(bytesOfBase64(text), std::nullopt) << text;
    EXPECT_EQ(bytesOfBase64("Zh=="), "f");
}

TEST(DebugText, QuotesAndEscapes) {
    constexpr std::pair<std::string_view, std::string_view> cases[] = {
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
    for (const auto& [text, shown] : cases) EXPECT_EQ(debugText(text), shown);
}

TEST(Unicode, ReadsOneScalarAtATime) {
    constexpr struct {
        std::string_view text;
        char32_t value;
        std::size_t length;
    } cases[] = {{"\0x"sv, 0, 1},         {"\u0080x"sv, 0x80, 2},        {"\u07FFx"sv, 0x7FF, 2},
                 {"\u0800x"sv, 0x800, 3}, {"\U00010000x"sv, 0x10000, 4}, {"\U0010FFFFx"sv, 0x10FFFF, 4}};

    for (const auto& [text, value, length] : cases) {
        const auto scalar = firstScalar(text);
        EXPECT_TRUE(scalar.valid && isUtf8(text)) << text;
        EXPECT_EQ(scalar.value, value);
        EXPECT_EQ(scalar.length, length);
    }
}

TEST(Unicode, StepsOverAMalformedByteAlone) {
    constexpr std::pair<const char*, std::string_view> cases[] = {
        {"lone continuation", "\x80x"sv},        {"lead without an end", "\xE2\x82"sv},
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

} // namespace corvantile::TextTest
