#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "Tests/Contracts/Harness.hpp"
#include "Tests/CorvantilePlatform/AtOnce.hpp"

namespace corvantile::DispatchQueueContractTest {

using namespace std::chrono_literals;

using Numbers = std::vector<int>;

Numbers numbersBelow(int count) {
    Numbers numbers;
    for (int i = 0; i < count; ++i) numbers.push_back(i);
    return numbers;
}

// What a queue's items note down: the queue orders them, `count` tells the test that they are there.
struct Journal {
    Numbers notes;
    std::atomic<int> count{0};

    void note(int number) {
        notes.push_back(number);
        ++count;
    }
};

template <class Harness>
class DispatchQueueContract : public PortContract<Harness> {
protected:
    // The main queue and one of the others: what holds for every queue is tried on both.
    std::vector<std::shared_ptr<DispatchQueue>> bothKinds() { return {this->mainQueue(), this->makeQueue()}; }

    bool runUntilNoted(const Journal& journal, int count) {
        return this->runUntil([&] { return journal.count >= count; });
    }

    // Runs `body` as an item of `queue` and waits for its end.
    bool runOn(DispatchQueue& queue, const std::function<void()>& body) {
        std::atomic<bool> done{false};
        queue.async([&] {
            body();
            done = true;
        });
        return this->runUntil([&] { return done.load(); });
    }
};
TYPED_TEST_SUITE(DispatchQueueContract, Harnesses);

TYPED_TEST(DispatchQueueContract, KeepsEachProducersOrderAndRunsOneItemAtATime) {
    constexpr int producerCount = 4;
    constexpr int itemsEach = 500;
    for (const auto& queue : this->bothKinds()) {
        std::vector<Numbers> seen(producerCount);
        std::atomic<bool> isBusy{false};
        std::atomic<int> overlaps{0};
        std::atomic<int> count{0};

        atOnce(producerCount, [&](int producer) {
            auto& numbers = seen[static_cast<std::size_t>(producer)];
            for (int i = 0; i < itemsEach; ++i)
                queue->async([&, i] {
                    if (isBusy.exchange(true)) ++overlaps;
                    numbers.push_back(i);
                    isBusy = false;
                    ++count;
                });
        });
        EXPECT_TRUE(this->runUntil([&] { return count == producerCount * itemsEach; }));

        EXPECT_EQ(overlaps, 0);
        for (const auto& numbers : seen) EXPECT_EQ(numbers, numbersBelow(itemsEach));
    }
}

TYPED_TEST(DispatchQueueContract, NeverRunsAnItemInsideTheCallThatPostsIt) {
    for (const auto& queue : this->bothKinds()) {
        Journal journal;

        EXPECT_TRUE(this->runOn(*queue, [&] {
            queue->async([&] { journal.note(1); });
            queue->asyncAfter(0ns, [&] { journal.note(2); });
            queue->asyncAfter(-1h, [&] { journal.note(3); });
            journal.note(0);
        }));
        EXPECT_TRUE(this->runUntilNoted(journal, 4));

        EXPECT_EQ(journal.notes.front(), 0);
    }
}

TYPED_TEST(DispatchQueueContract, WaitsTheWholeDelayAndOrdersTimersByDeadlineThenCall) {
    for (const auto& queue : this->bothKinds()) {
        const auto& clock = *this->ports().clock;
        const auto start = clock.now();
        Journal journal;
        for (const int number : numbersBelow(100))
            queue->asyncAfter(5ms, [&journal, number] { journal.note(number); });
        for (const int delay : {60, 20, 40})
            queue->asyncAfter(std::chrono::milliseconds(delay), [&, delay] {
                EXPECT_GE(clock.now() - start, delay * 1ms - 1us);
                journal.note(100 + delay);
            });
        EXPECT_TRUE(this->runUntilNoted(journal, 103));

        auto expected = numbersBelow(100);
        expected.insert(expected.end(), {120, 140, 160});
        EXPECT_EQ(journal.notes, expected);
    }
}

TYPED_TEST(DispatchQueueContract, DrainsAQueueThatNobodyHoldsAnyMore) {
    Journal journal;
    auto queue = this->makeQueue();
    const std::weak_ptr<DispatchQueue> weak = queue;

    queue->asyncAfter(10ms, [&] { journal.note(2); });
    for (const int number : {0, 1}) queue->async([&journal, number] { journal.note(number); });
    queue.reset();

    EXPECT_TRUE(this->runUntilNoted(journal, 3));
    EXPECT_EQ(journal.notes, (Numbers{0, 1, 2}));
    EXPECT_TRUE(this->runUntil([&] { return weak.expired(); }));
}

TYPED_TEST(DispatchQueueContract, KnowsWhereTheCallerIsAndKeepsQueuesOfOneLabelApart) {
    const auto main = this->mainQueue();
    const auto serial = this->makeQueue("same");
    const auto another = this->makeQueue("same");
    // Which of the three is current, as each place sees it.
    const auto view = [&] {
        return std::vector{main->isCurrent(), serial->isCurrent(), another->isCurrent()};
    };

    EXPECT_EQ(serial->label(), another->label());
    EXPECT_EQ(view(), (std::vector{true, false, false}));
    EXPECT_TRUE(this->runOn(*main, [&] { EXPECT_EQ(view(), (std::vector{true, false, false})); }));
    EXPECT_TRUE(this->runOn(*serial, [&] { EXPECT_EQ(view(), (std::vector{false, true, false})); }));
    std::thread([&] { EXPECT_EQ(view(), (std::vector{false, false, false})); }).join();
}

TYPED_TEST(DispatchQueueContract, DestroysUnrunWhatWaitsWhenTheProcessEnds) {
    const auto main = this->mainQueue();
    const auto serial = this->makeQueue();
    std::atomic<int> ended{0};
    std::atomic<int> ran{0};
    const auto nothing = [] {};
    // Something to run that owns something, which has an end.
    const auto item = [&](std::function<void()> atEnd) {
        const auto end = [&ended, act = std::move(atEnd)](void*) {
            act();
            ++ended;
        };
        return [&ran, owned = std::shared_ptr<void>(nullptr, end)] { ++ran; };
    };
    // Each end posts once more, to both: gone at once.
    const auto post = [&] {
        main->async(item(nothing));
        serial->asyncAfter(-1s, item(nothing));
    };

    main->async(item(post));
    main->asyncAfter(1h, item(nothing));
    serial->asyncAfter(1h, item(post));
    this->endProcess();
    EXPECT_EQ(ended, 7);
    main->async(item(nothing));
    serial->async(item(nothing));
    serial->asyncAfter(1s, item(nothing));
    EXPECT_EQ(ended, 10);
    EXPECT_EQ(ran, 0);
}

} // namespace corvantile::DispatchQueueContractTest
