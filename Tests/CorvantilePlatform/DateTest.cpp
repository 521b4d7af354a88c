#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/detail/CalendarText.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <limits>
#include <string_view>

namespace corvantile::DateTest {

using namespace std::chrono_literals;

TEST(Date, DescribesItselfInUtcRoundedDown) {
    const std::pair<double, std::string_view> cases[] = {{Date::unixToReference, "2001-01-01 00:00:00 +0000"},
                                                         {1704164645.999, "2024-01-02 03:04:05 +0000"},
                                                         {1709251199, "2024-02-29 23:59:59 +0000"},
                                                         {-0.25, "1969-12-31 23:59:59 +0000"},
                                                         {-62135596800, "0001-01-01 00:00:00 +0000"}};

    for (const auto& [seconds, text] : cases) EXPECT_EQ(describe(Date::fromUnixSeconds(seconds)), text);
}

TEST(Date, TimestampsInTheZoneGiven) {
    const struct {
        double unixMilliseconds;
        std::chrono::seconds offset;
        std::string_view text;
    } cases[] = {{1704164645678, 0s, "2024-01-02 03:04:05.678"},
                 {1704164645678, -(5h + 30min), "2024-01-01 21:34:05.678"},
                 {1704164645678, 14h, "2024-01-02 17:04:05.678"},
                 {1704164645009.9, 0s, "2024-01-02 03:04:05.009"},
                 {-1, 0s, "1969-12-31 23:59:59.999"}};

    for (const auto& [milliseconds, offset, text] : cases)
        EXPECT_EQ(timestamp(Date::fromUnixMilliseconds(milliseconds), offset), text);
}

TEST(Date, KeepsEveryMillisecondOfASecondInItsText) {
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
        const auto text = timestamp(Date::fromUnixMilliseconds(1704164645000.0 + millisecond), 0s);
        EXPECT_EQ(std::stoi(text.substr(text.find('.') + 1)), millisecond);
    }
}

TEST(Date, HasATextHoweverFarAway) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double seconds : {1e300, -infinity, std::numeric_limits<double>::quiet_NaN()})
        for (const auto offset : {-14h, 14h}) EXPECT_NE(timestamp(Date{seconds}, offset), "") << seconds;
    EXPECT_EQ(describe(Date{1e300}), describe(Date{infinity}));
    EXPECT_EQ(describe(Date{-1e300}), describe(Date{-infinity}));
}

} // namespace corvantile::DateTest
