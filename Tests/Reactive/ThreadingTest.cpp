#include "Reactive/CombineLatest.hpp"
#include "Reactive/DisposableSlot.hpp"
#include "Reactive/Factories.hpp"
#include "Reactive/PublishSubject.hpp"
#include "Reactive/ReplaySubject.hpp"
#include "Tests/Reactive/PlatformTest.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <latch>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

// Real threads; meant for the thread sanitizer as much as for what the tests assert.
namespace corvantile::rx {

namespace {

constexpr int rounds = 200;

// Runs all at once, each on a thread of its own, and waits for them.
void together(const std::vector<std::function<void()>>& bodies) {
    std::latch start(static_cast<std::ptrdiff_t>(bodies.size()));
    std::vector<std::thread> threads;
    for (const auto& body : bodies)
        threads.emplace_back([&start, &body] {
            start.arrive_and_wait();
            body();
        });
    for (auto& thread : threads) thread.join();
}

class Threading : public PlatformTest {};

} // namespace

TEST(ThreadingOfSubjects, GivesASubscriberThatEntersMeanwhileEachElementOnceAndInOrder) {
    constexpr int count = 50;
    std::vector<int> expected(count);
    std::iota(expected.begin(), expected.end(), 0);
    for (int round = 0; round < rounds; ++round) {
        const auto subject = ReplaySubject<int>::createUnbounded();
        std::vector<int> first, second;
        bool hasEnded = false;
        together({[&] {
                      for (int i = 0; i < count; ++i) subject.onNext(i);
                      subject.onCompleted();
                  },
                  [&] { subject.subscribe([&](int value) { first.push_back(value); }); },
                  [&] {
                      subject.map([](int value) { return value; })
                          .subscribe([&](int value) { second.push_back(value); }, nullptr,
                                     [&] { hasEnded = true; });
                  }});
        ASSERT_EQ(first, expected);
        ASSERT_EQ(second, expected);
        ASSERT_TRUE(hasEnded);
    }
}

TEST(ThreadingOfSubjects, LetsAnyThreadEmitSubscribeAndLeave) {
    PublishSubject<int> subject;
    std::atomic<int> received{0};
    const auto steady = subject.subscribe([&](int) { ++received; });
    const auto emit = [&] {
        for (int i = 0; i < rounds; ++i) subject.onNext(i);
    };
    const auto comeAndGo = [&] {
        for (int i = 0; i < rounds; ++i) {
            const auto handle = subject.map([](int value) { return value + 1; }).subscribe([](int) {});
            handle.dispose();
        }
    };

    together({emit, emit, comeAndGo, comeAndGo});

    EXPECT_EQ(received, 2 * rounds);
    steady.dispose();
    EXPECT_FALSE(subject.hasObservers());
}

TEST(ThreadingOfSubscriptions, ReportsTheEndOnceWhenTerminalAndDisposeRace) {
    for (int round = 0; round < rounds; ++round) {
        PublishSubject<int> subject;
        std::atomic<int> disposed{0}, left{0};
        const auto handle = subject.doOn({.onDispose = [&] { ++left; }})
                                .subscribe([](int) {}, nullptr, nullptr, [&] { ++disposed; });
        const auto dispose = [&] { handle.dispose(); };

        together({[&] { subject.onCompleted(); }, dispose, dispose});

        ASSERT_EQ(disposed, 1);
        ASSERT_EQ(left, 1);
    }
}

TEST(ThreadingOfSubscriptions, LeavesASourceThatEndsWhileItIsBeingSubscribedTo) {
    for (int round = 0; round < rounds; ++round) {
        std::atomic<int> stopped{0};
        std::thread producer;
        const auto stream = create<int>([&](const AnyObserver<int>& observer) {
            producer = std::thread([observer] { observer.onNext(1), observer.onCompleted(); });
            return Disposable::create([&] { ++stopped; });
        });
        const auto handle = stream.subscribe([](int) {});
        handle.dispose();
        producer.join();
        ASSERT_EQ(stopped, 1);
    }
}

TEST(ThreadingOfCombineLatest, SerialisesItsSidesAndEndsOnce) {
    for (int round = 0; round < rounds; ++round) {
        PublishSubject<int> a, b;
        int delivered = 0, ended = 0; // unguarded: the operator serialises
        combineLatest(a, b).subscribe([&](const auto&) { ++delivered; },
                                      [&](const std::exception_ptr&) { ++ended; });
        b.onNext(0);
        together({[&] {
                      for (int i = 0; i < 20; ++i) a.onNext(i);
                  },
                  [&] { b.onNext(1), b.onError(failure("boom")); }});
        ASSERT_EQ(ended, 1);
        ASSERT_LE(delivered, 21);
    }
}

TEST_F(Threading, OfObserveOnKeepsTheOrderOfEachProducer) {
    constexpr int producers = 3;
    PublishSubject<std::pair<int, int>> subject;
    std::vector<int> last(producers, -1);
    int received = 0;
    bool isOrdered = true;
    subject.observeOn(makeScheduler()).subscribe([&](const std::pair<int, int>& item) {
        isOrdered = isOrdered && last.at(static_cast<std::size_t>(item.first)) == item.second - 1;
        last.at(static_cast<std::size_t>(item.first)) = item.second;
        ++received;
    });
    std::latch done(producers);
    std::vector<std::thread> threads;
    for (int producer = 0; producer < producers; ++producer)
        threads.emplace_back([&, producer] {
            for (int i = 0; i < rounds; ++i) subject.onNext({producer, i});
            done.count_down();
        });

    while (!done.try_wait()) platform_->runUntilIdle();
    platform_->runUntilIdle();
    for (auto& thread : threads) thread.join();

    EXPECT_TRUE(isOrdered);
    EXPECT_EQ(received, producers * rounds);
}

TEST_F(Threading, OfSubscribeOnLetsDisposeRaceWithItsItem) {
    for (int round = 0; round < rounds; ++round) {
        PublishSubject<int> subject;
        const auto handle =
            subject.subscribeOn(makeScheduler()).observeOn(makeScheduler()).subscribe([](int) {});
        std::thread other([&] { handle.dispose(); });
        platform_->runUntilIdle();
        subject.onNext(1);
        other.join();
        platform_->runUntilIdle();
        ASSERT_FALSE(subject.hasObservers());
    }
}

TEST_F(Threading, OfAConnectableGivesOneConnection) {
    for (int round = 0; round < rounds; ++round) {
        PublishSubject<int> subject;
        std::atomic<int> subscriptions{0};
        const auto shared = subject.doOn({.onSubscribe = [&] { ++subscriptions; }}).replayAll();
        std::atomic<int> received{0};
        const auto connect = [&] {
            shared.subscribe([&](int) { ++received; });
            (void)shared.connect();
        };
        together({connect, connect, [&] { subject.onNext(1); }});
        subject.onNext(2);
        ASSERT_EQ(subscriptions, 1);
        ASSERT_GE(received, 2);
        shared.connect().dispose();
        ASSERT_FALSE(subject.hasObservers());
    }
}

TEST(ThreadingOfSlots, DisposesOfWhatWasExchangedOnce) {
    DisposableSlot slot;
    std::atomic<int> disposed{0};
    const auto fill = [&] {
        for (int i = 0; i < rounds; ++i) slot.exchange(Disposable::create([&] { ++disposed; })).dispose();
    };
    together({fill, fill, [&] {
                  for (int i = 0; i < rounds; ++i) slot.disposeAndClear();
              }});
    slot.disposeAndClear();
    EXPECT_EQ(disposed, 2 * rounds);
}

} // namespace corvantile::rx
