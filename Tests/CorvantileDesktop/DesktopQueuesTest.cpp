#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <csignal>
#include <latch>
#include <thread>

#include <pthread.h>

namespace corvantile::DesktopQueuesTest {

using namespace std::chrono_literals;

std::shared_ptr<DispatchQueue> makeQueue() {
    return Platform::current().ports().queues->makeSerial("test", QualityOfService::standard);
}

TEST(DesktopQueues, LoseNoItemThatIsPostedWhileThePlatformEnds) {
    for (int round = 0; round < 20; ++round) {
        std::atomic<int> alive{0};
        std::atomic<bool> ended{false};
        auto platform = std::make_unique<DesktopPlatform>();
        const std::vector<std::shared_ptr<DispatchQueue>> queues = {makeQueue(), DispatchQueue::main()};
        std::latch posted(1);
        const auto held = [&alive] {
            ++alive;
            return std::shared_ptr<void>(nullptr, [&alive](void*) { --alive; });
        };
        std::thread poster([&] {
            for (int count = 0; !ended; ++count) {
                for (const auto& queue : queues) {
                    queue->async([holding = held()] {});
                    queue->asyncAfter(1us, [holding = held()] {});
                }
                if (count == 10) posted.count_down();
            }
        });
        posted.wait();

        platform.reset();
        ended = true;
        poster.join();

        ASSERT_EQ(alive, 0);
    }
}

TEST(DesktopQueues, ThatAreNeverEmptyLeaveOthersTheirTurn) {
    DesktopPlatform platform;
    std::atomic<bool> done{false};
    std::vector<std::function<void()>> loops(8);
    for (auto& loop : loops) {
        loop = [&, queue = makeQueue()] {
            if (!done) queue->async(loop);
        };
        loop();
    }

    makeQueue()->async([&] { done = true; });

    EXPECT_TRUE(platform.runMainLoopUntil([&] { return done.load(); }, 10s));
    done = true; // or the loops would go on while they are taken down
}

TEST(DesktopQueues, LeaveSignalsToTheHostsThreads) {
    DesktopPlatform platform;
    std::atomic<int> blocked{-1};

    makeQueue()->async([&] {
        sigset_t signals;
        pthread_sigmask(SIG_SETMASK, nullptr, &signals);
        blocked = sigismember(&signals, SIGINT);
    });

    EXPECT_TRUE(platform.runMainLoopUntil([&] { return blocked >= 0; }, 10s));
    EXPECT_EQ(blocked, 1);
}

} // namespace corvantile::DesktopQueuesTest
