#include "Platform/Foundation/Clock.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <gtest/gtest.h>

#include <chrono>

namespace corvantile {
namespace {

using namespace std::chrono_literals;

template <class Harness>
class ClockContract : public PortContract<Harness> {};
TYPED_TEST_SUITE(ClockContract, Harnesses);

TYPED_TEST(ClockContract, GoesOnWhileAppsWait) {
    const auto& clock = *this->ports().clock;
    const auto start = clock.now();

    bool done = false;
    this->mainQueue()->asyncAfter(20ms, [&] { done = true; });
    ASSERT_TRUE(this->runUntil([&] { return done; }));

    EXPECT_GE(clock.now() - start, 19ms);
    EXPECT_LT(clock.now() - start, 10s);
}

TYPED_TEST(ClockContract, KnowsTheLocalOffsetOfEveryDate) {
    const auto& clock = *this->ports().clock;

    for (const double years : {-2000.0, -90.0, 0.0, 24.5, 900.0}) {
        const auto offset = clock.localOffset(Date{years * 31556952});
        EXPECT_LT(std::chrono::abs(offset), 24h) << years;
    }
}

} // namespace
} // namespace corvantile
