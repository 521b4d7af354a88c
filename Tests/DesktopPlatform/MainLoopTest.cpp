#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

namespace corvantile {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 10s;

struct MainLoop : testing::Test {
    DesktopPlatform platform;
    std::string trace;

    void post(char letter) {
        DispatchQueue::main()->async([this, letter] { trace += letter; });
    }
    void postStop() {
        DispatchQueue::main()->async([this] { platform.stopMainLoop(); });
    }
};

using MainLoopDeathTest = MainLoop;

} // namespace

TEST_F(MainLoop, StopsAfterTheItemThatAsksForItAndKeepsTheRestForTheNextRun) {
    post('a');
    postStop();
    post('b');
    postStop();

    platform.runMainLoop();
    EXPECT_EQ(trace, "a");
    platform.runMainLoop();
    EXPECT_EQ(trace, "ab");
}

TEST_F(MainLoop, EndsAtItsStartWhenTheStopCameFirst) {
    post('a');

    platform.stopMainLoop();
    platform.runMainLoop();
    EXPECT_EQ(trace, "");
    EXPECT_TRUE(platform.runMainLoopUntil([&] { return trace == "a"; }, patience));
}

TEST_F(MainLoop, IsStoppedByAnotherThreadWhileItSleeps) {
    const auto worker = platform.ports().queues->makeSerial("worker", QualityOfService::standard);
    worker->asyncAfter(1ms, [this] { platform.stopMainLoop(); });

    platform.runMainLoop();
}

TEST_F(MainLoop, RunsUntilItsConditionHoldsAndNotOneItemFurther) {
    post('a');
    post('b');
    post('c');

    EXPECT_TRUE(platform.runMainLoopUntil([&] { return trace == "ab"; }, patience));
    EXPECT_EQ(trace, "ab");
}

TEST_F(MainLoop, NoticesAConditionThatAnotherThreadMakesTrue) {
    std::atomic<bool> done{false};
    const auto worker = platform.ports().queues->makeSerial("worker", QualityOfService::standard);
    worker->async([&] { done = true; });

    EXPECT_TRUE(platform.runMainLoopUntil([&] { return done.load(); }, patience));
}

TEST_F(MainLoop, GivesUpWhenItsTimeHasPassedOrItIsStopped) {
    const auto never = [] { return false; };

    EXPECT_FALSE(platform.runMainLoopUntil(never, 2ms));
    postStop();
    EXPECT_FALSE(platform.runMainLoopUntil(never, std::chrono::nanoseconds::max()));
}

TEST_F(MainLoop, RunsForAsLongAsAsked) {
    post('a');
    const auto start = std::chrono::steady_clock::now();

    platform.runMainLoopFor(3ms);

    EXPECT_EQ(trace, "a");
    EXPECT_GE(std::chrono::steady_clock::now() - start, 3ms);
}

TEST_F(MainLoopDeathTest, RunsOnlyOnItsThreadAndNotInsideItself) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_DEATH(std::thread([&] { platform.runMainLoop(); }).join(), "only on its main thread");
    EXPECT_DEATH(
        {
            DispatchQueue::main()->async([&] { platform.runMainLoop(); });
            platform.runMainLoop();
        },
        "outside any item");
}

} // namespace corvantile
