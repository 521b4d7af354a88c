#include "Platform/Foundation/Base64.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {
namespace {

using namespace std::string_literals;

TEST(Base64, WritesAndReadsThePublishedExamples) {
    const struct {
        std::string bytes;
        std::string_view text;
    } cases[] = {{"", ""},
                 {"f", "Zg=="},
                 {"fo", "Zm8="},
                 {"foo", "Zm9v"},
                 {"foob", "Zm9vYg=="},
                 {"fooba", "Zm9vYmE="},
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
    const struct {
        std::size_t zeroBytes;
        std::string text;
    } cases[] = {{47, line.substr(1).append("=")},
                 {48, line},
                 {49, line + "\r\nAA=="},
                 {96, line + "\r\n" + line},
                 {97, line + "\r\n" + line + "\r\nAA=="}};
    for (const auto& [zeroBytes, text] : cases) EXPECT_EQ(base64Lines(std::string(zeroBytes, '\0')), text);
}

TEST(Base64, ReadsBackBytesOfEveryLengthInBothForms) {
    std::string bytes;
    for (int length = 0; length < 200; ++length) {
        EXPECT_EQ(bytesOfBase64(base64(bytes)), bytes);
        EXPECT_EQ(bytesOfBase64(base64Lines(bytes)), bytes);
        bytes += static_cast<char>(length * 73 + 5);
    }
}

TEST(Base64, SkipsWhatIsNotInTheAlphabetWhereverItStands) {
    for (const auto text : {"Zm9vYmE=\n", " Zm9vYmE=", "Zm9v\r\nYmE=", "Z-m_9.v*YmE=", "Zm9vYmE\xC3\xA4=",
                            "Zm9vY\nmE=", "Zm9vYm\n\n\nE\n=\n"})
        EXPECT_EQ(bytesOfBase64(text), "fooba") << text;
    EXPECT_EQ(bytesOfBase64("Zm\0 9v"s), "foo");
    EXPECT_EQ(bytesOfBase64("\r\n .-_"), "");
}

TEST(Base64, RefusesWhatCannotBeWhole) {
    for (const auto text : {"Z", "Zm", "Zm9", "Zm9vY", "Zm9vYg=", "Zm9vYg", "Zm9v=", "Zm9v====", "=",
                            "====", "Z===", "Zg==Zg==", "Zg=a", "Zm=8", "Zg==="})
        EXPECT_EQ(bytesOfBase64(text), std::nullopt) << text;
}

TEST(Base64, IgnoresBitsThatFillNoByte) {
    EXPECT_EQ(bytesOfBase64("Zh=="), "f");
    EXPECT_EQ(bytesOfBase64("Zm9="), "fo");
}

} // namespace
} // namespace corvantile
