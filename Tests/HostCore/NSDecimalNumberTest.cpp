#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"

#include "Tests/CorvantileTest/Matchers.hpp"

#include <cstddef>
#include <iterator>
#include <limits>

namespace corvantile::NSDecimalNumberTest {

constexpr std::string_view nines = "99999999999999999999999999999999999999"; // as many as fit

NSDecimalNumber number(std::string_view text) {
    const auto read = NSDecimalNumber::fromText(text);
    if (!read) ADD_FAILURE() << text << " is no number";
    return read.value_or(NSDecimalNumber());
}

TEST(NSDecimalNumber, ReadsTextAndWritesItNormalised) {
    constexpr std::pair<std::string_view, std::string_view> cases[] = {
        {"4.99", "4.99"},
        {"+007.00", "7"},
        {"-1.5", "-1.5"},
        {"-0.00", "0"},
        {".5", "0.5"},
        {"5.", "5"},
        {"3e-2", "0.03"},
        {"-1.25E+3", "-1250"},
        {"0e999", "0"},
        {"0.1234567890123456789012345678901234567849", "0.12345678901234567890123456789012345678"},
        {"123456789012345678901234567890123456785", "123456789012345678901234567890123456790"},
        {"99999999999999999999999999999999999999.5", "100000000000000000000000000000000000000"},
    };
    for (const auto& [text, description] : cases) EXPECT_EQ(number(text).description(), description) << text;
    EXPECT_EQ(number("1e127").description(), "1" + std::string(127, '0'));
    EXPECT_EQ(number("1e-128").description(), "0." + std::string(127, '0') + "1");
}

TEST(NSDecimalNumber, ReadsNothingElse) {
    for (const auto* const text :
         {"",      " ",    "+",  ".",   "-.",    "1,5", "1 000", " 1",    "1 ",     "--1",
          "1.2.3", "0x10", "1e", "1e+", "1e1.5", "NaN", "inf",   "1e128", "1e-129", "1e99999999999"})
        EXPECT_EQ(NSDecimalNumber::fromText(text), std::nullopt) << text;
}

TEST(NSDecimalNumber, TakesIntegersAndParts) {
    EXPECT_EQ(NSDecimalNumber(std::numeric_limits<std::int64_t>::min()), number("-9223372036854775808"));
    EXPECT_EQ(NSDecimalNumber(std::numeric_limits<std::uint64_t>::max()), number("18446744073709551615"));
    EXPECT_EQ(NSDecimalNumber(4990, -3, true), number("-4.99"));
}

TEST(NSDecimalNumber, AddsAndSubtracts) {
    constexpr struct {
        std::string_view left, right, sum, difference;
    } cases[] = {
        {"0.1", "0.2", "0.3", "-0.1"},
        {"4.99", "-4.99", "0", "9.98"},
        {"-10", "4.99", "-5.01", "-14.99"},
        {"0", "1e-120", "1e-120", "-1e-120"},
        {"1e30", "1e-7", "1000000000000000000000000000000.0000001", "999999999999999999999999999999.9999999"},
        // Beyond the digits there are, the smaller one is rounded to the larger one's last.
        {"1e38", "5", "100000000000000000000000000000000000010", "99999999999999999999999999999999999990"},
        {nines, "1", "1e38", "99999999999999999999999999999999999998"},
        {"1e100", "1e-100", "1e100", "1e100"},
    };
    for (const auto& [left, right, sum, difference] : cases) {
        SCOPED_TRACE(std::string(left) + " and " + std::string(right));
        EXPECT_EQ((number(left) + number(right)).description(), number(sum).description());
        EXPECT_EQ((number(left) - number(right)).description(), number(difference).description());
    }
}

TEST(NSDecimalNumber, OrdersByValue) {
    const std::string_view ascending[] = {"-1e100", "-4.99", "-4.9", "-1e-128", "0",   "1e-128",
                                          "0.5",    "4.9",   "4.99", "10",      nines, "1e38"};
    for (std::size_t i = 0; i < std::size(ascending); ++i)
        for (std::size_t j = 0; j < std::size(ascending); ++j)
            EXPECT_EQ(number(ascending[i]) <=> number(ascending[j]), i <=> j)
                << ascending[i] << ' ' << ascending[j];
}

TEST(NSDecimalNumber, GivesTheNearestDouble) {
    for (const auto& [text, value] : {std::pair("4.99", 4.99),
                                      {"9007199254740993", 9007199254740992.0},
                                      {"1e127", 1e127},
                                      {"-1e-128", -1e-128}})
        EXPECT_EQ(number(text).doubleValue(), value) << text;
}

} // namespace corvantile::NSDecimalNumberTest
