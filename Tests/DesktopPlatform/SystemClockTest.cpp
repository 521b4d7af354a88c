#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Platform/Foundation/Clock.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

namespace corvantile {

TEST(SystemClock, KnowsTheLocalOffsetAtEachDate) {
    using namespace std::chrono_literals;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const struct {
        const char* zone;
        double unixSeconds;
        std::chrono::seconds expected;
    } cases[] = {{"UTC0", 0, 0s},
                 {"NST3:30", 0, -210min},
                 {"CET-1CEST,M3.5.0,M10.5.0/3", 1704164645, 1h},          // 2024-01-02
                 {"CET-1CEST,M3.5.0,M10.5.0/3", 1719921845, 2h},          // 2024-07-02
                 {"CET-1CEST,M3.5.0,M10.5.0/3", 1711846799.999, 1h},      // just before the change
                 {"CET-1CEST,M3.5.0,M10.5.0/3", 1711846800, 2h},          // at it
                 {"CET-1CEST,M3.5.0,M10.5.0/3", 7'258'118'400.0 * 9, 1h}, // in the year 4037
                 {"NST3:30", -1e13, -210min},
                 {"NST3:30", infinity, -210min},
                 {"NST3:30", -infinity, -210min},
                 {"NST3:30", std::numeric_limits<double>::quiet_NaN(), 0s}};
    for (const auto& [zone, unixSeconds, expected] : cases) {
        SCOPED_TRACE(testing::Message() << zone << " at " << unixSeconds);
        ::setenv("TZ", zone, 1);
        DesktopPlatform platform;
        EXPECT_EQ(platform.ports().clock->localOffset(Date::fromUnixSeconds(unixSeconds)), expected);
    }
    ::unsetenv("TZ");
}

} // namespace corvantile
