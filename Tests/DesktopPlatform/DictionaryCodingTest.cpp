#include "DesktopPlatform/Keychain/DictionaryCoding.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace corvantile {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;

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
    const std::set<std::size_t> endsOfEntries = {1, 19, 37, 55, 73, 93};
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_EQ(decodeDictionary(bytes.substr(0, size)).has_value(), endsOfEntries.contains(size)) << size;
}

TEST(DictionaryCoding, ReadsNothingElse) {
    const auto key = "\1\0\0\0\0\0\0\0k"s;
    const auto yes = "b\1\0\0\0\0\0\0\0"s;
    for (const auto& bytes :
         {"\2"s, "\1"s + key + yes + key + yes, "\1"s + key + "b\2\0\0\0\0\0\0\0"s,
          "\1"s + key + "q\1\0\0\0\0\0\0\0"s, "\1\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFFk"s + yes})
        EXPECT_EQ(decodeDictionary(bytes), std::nullopt);
}

TEST(DictionaryCoding, KeepsTheBitsOfANumberThatIsNone) {
    const auto bits = std::uint64_t{0x7FF4'0000'1234'5678};
    const auto bytes = encodeDictionary({{"date", Date{std::bit_cast<double>(bits)}}});

    EXPECT_EQ(encodeDictionary(decodeDictionary(bytes).value()), bytes);
    EXPECT_THAT(bytes, HasSubstr("\x78\x56\x34\x12"));
}

} // namespace
} // namespace corvantile
