#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantileTest/ForEachSeed.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

#include <stdexcept>

namespace corvantile::InterleavingTest {

using namespace std::chrono_literals;

// The order in which two items of each of three queues run: a queue's first one in small, its second in
// capitals.
std::string order(std::uint64_t seed, std::chrono::nanoseconds delay = 0ns) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device, {.seed = seed});
    auto& queues = *platform->ports().queues;
    const std::shared_ptr<DispatchQueue> three[] = {queues.main(), queues.makeSerial("b", {}),
                                                    queues.makeSerial("c", {})};
    std::string journal;
    for (const char* const names : {"abc", "ABC"})
        for (std::size_t i = 0; i < 3; ++i)
            three[i]->asyncAfter(delay, [&journal, name = names[i]] { journal += name; });
    platform->advance(delay);
    return journal;
}

TEST(Interleaving, FollowsTheOrderOfPostingWithSeedZeroAndIsAlwaysTheSameForASeed) {
    EXPECT_EQ(order(0), "abcABC");
    EXPECT_EQ(order(0, 1s), "abcABC");
    EXPECT_EQ(order(42), order(42));
}

TEST(Interleaving, ReachesEveryOrderThatKeepsEachQueueInOrder) {
    std::set<std::string> orders;
    for (std::uint64_t seed = 1; seed <= 1000; ++seed) {
        const auto found = order(seed, seed % 2 == 0 ? 1s : 0s);
        for (const auto& [first, second] : {std::pair('a', 'A'), std::pair('b', 'B'), std::pair('c', 'C')})
            ASSERT_LT(found.find(first), found.find(second)) << found;
        orders.insert(found);
    }

    EXPECT_EQ(orders.size(), 90u); // 6! orders, of which each queue keeps half
}

TEST(ForEachSeed, StopsAtAndNamesTheFailingSeed) {
    std::uint64_t last = 0;
    const auto note = [&](std::uint64_t seed) { last = seed; };
    const auto breakAtFive = [&](std::uint64_t seed) {
        if (seed == 5) throw std::runtime_error("broken");
    };

    testing::internal::CaptureStderr();
    forEachSeed(100, note, [&] { return last == 7; });
    EXPECT_THROW(forEachSeed(100, breakAtFive, [] { return false; }), std::runtime_error);

    EXPECT_EQ(last, 7u);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Failed with seed 7 of the queues.\nFailed with seed 5 of the queues.\n");
}

} // namespace corvantile::InterleavingTest
