#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <thread>

namespace corvantile::MainLoopTest {

using namespace std::chrono_literals;

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

TEST_F(MainLoop, IsWokenByAnotherThreadThatStopsIt) {
    const auto worker = platform.ports().queues->makeSerial("worker", QualityOfService::standard);
    worker->asyncAfter(1ms, [this] { platform.stopMainLoop(); });
    platform.runMainLoop();
}

TEST_F(MainLoop, RunsUntilItsConditionHoldsItsTimeHasPassedOrItIsStopped) {
    const auto never = [] { return false; };
    for (const char letter : {'a', 'b', 'c'}) post(letter);

    EXPECT_TRUE(platform.runMainLoopUntil([&] { return trace == "ab"; }, 10s));
    EXPECT_EQ(trace, "ab"); // and not one item further
    EXPECT_FALSE(platform.runMainLoopUntil(never, 2ms));
    postStop();
    EXPECT_FALSE(platform.runMainLoopUntil(never, std::chrono::nanoseconds::max()));
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

} // namespace corvantile::MainLoopTest
