#include "DesktopPlatform/Keychain/DictionaryCoding.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace corvantile {
namespace {

using namespace std::string_literals;

TEST(DictionaryCoding, HasTheBytesThatEveryVersionReads) {
    const std::string bytes = "\1"s
                              "\1\0\0\0\0\0\0\0b"
                              "b\1\0\0\0\0\0\0\0"s
                              "\1\0\0\0\0\0\0\0d"
                              "d\0\0\0\0\0\0\xF8\x3F"s
                              "\1\0\0\0\0\0\0\0i"
                              "i\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s
                              "\1\0\0\0\0\0\0\0r"
                              "r\0\0\0\0\0\0\0\x80"s
                              "\1\0\0\0\0\0\0\0t"
                              "t\2\0\0\0\0\0\0\0\xC3\xA4"s
                              "\1\0\0\0\0\0\0\0x"
                              "x\1\0\0\0\0\0\0\0\xFF"s;
    const KeychainDictionary dictionary = {{"t", "ä"},  {"b", true},      {"i", -2},
                                           {"r", -0.0}, {"d", Date{1.5}}, {"x", KeychainData{255}}};

    EXPECT_EQ(encodeDictionary(dictionary), bytes);
    EXPECT_EQ(decodeDictionary(bytes), dictionary);
    EXPECT_EQ(encodeDictionary(*decodeDictionary(bytes)), bytes); // the sign of zero too
    EXPECT_EQ(decodeDictionary(bytes.substr(0, bytes.size() - 1)), std::nullopt);
    EXPECT_EQ(decodeDictionary("\2"), std::nullopt);
}

} // namespace
} // namespace corvantile
