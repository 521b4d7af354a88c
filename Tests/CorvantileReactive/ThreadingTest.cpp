#include "CorvantileReactive/CombineLatest.hpp"
#include "Tests/CorvantilePlatform/AtOnce.hpp"
#include "Tests/CorvantileReactive/PlatformTest.hpp"

#include <numeric>

// Real threads; meant for the thread sanitizer as much as for what the tests assert.
namespace corvantile::rx::ThreadingTest {

constexpr int rounds = 100;

using Threading = PlatformTest;

void repeat(const std::function<void(int)>& body) {
    for (int i = 0; i < rounds; ++i) body(i);
}

TEST_F(Threading, GivesASubscriberThatEntersMeanwhileEachElementOnceAndInOrder) {
    std::vector<int> expected(1000);
    std::iota(expected.begin(), expected.end(), 0);
    repeat([&](int) {
        const auto subject = ReplaySubject<int>::createUnbounded();
        std::vector<int> first, second;
        const auto into = [](std::vector<int>& received, const Observable<int>& stream) {
            stream.subscribe([&](int value) { received.push_back(value); }, nullptr,
                             [&] { received.push_back(-1); });
        };
        atOnce({[&] {
                    for (const int value : expected) subject.onNext(value);
                    subject.onCompleted();
                },
                [&] { into(first, subject); },
                [&] { into(second, subject.filter([](int) { return true; })); }});
        for (auto* const received : {&first, &second}) {
            ASSERT_EQ(received->back(), -1);
            received->pop_back();
            EXPECT_EQ(*received, expected);
        }
    });
}

TEST_F(Threading, ReportsTheEndOnceWhenTerminalAndDisposeRace) {
    repeat([](int) {
        PublishSubject<int> subject;
        std::atomic<int> disposed{0}, left{0};
        const auto handle =
            subject.doOn({.onDispose = [&] { ++left; }}).subscribe(nullptr, nullptr, nullptr, [&] {
                ++disposed;
            });
        const auto dispose = [&] { handle.dispose(); };
        atOnce({[&] { subject.onCompleted(); }, dispose, dispose});
        EXPECT_EQ(disposed, 1);
        EXPECT_EQ(left, 1);
    });
}

TEST_F(Threading, LeavesASourceThatEndsWhileItIsBeingSubscribedTo) {
    repeat([](int) {
        std::atomic<int> stopped{0};
        std::thread producer;
        create<int>([&](const auto& observer) {
            producer = std::thread([observer] { observer.onNext(1), observer.onCompleted(); });
            return Disposable::create([&] { ++stopped; });
        })
            .subscribe()
            .dispose();
        producer.join();
        EXPECT_EQ(stopped, 1);
    });
}

TEST_F(Threading, SerialisesTheSidesOfCombineLatestAndEndsItOnce) {
    repeat([](int) {
        PublishSubject<int> a, b;
        int delivered = 0, ended = 0; // unguarded
        combineLatest(a, b).subscribe([&](const auto&) { ++delivered; }, [&](const auto&) { ++ended; });
        b.onNext(0);
        atOnce({[&] {
                    for (int i = 0; i < 20; ++i) a.onNext(i);
                },
                [&] { b.onNext(1), b.onError(failure("no")); }});
        EXPECT_EQ(ended, 1);
    });
}

TEST_F(Threading, KeepsTheOrderOfEachProducerThroughObserveOn) {
    PublishSubject<std::pair<int, int>> subject;
    std::map<int, int> next;
    subject.observeOn(makeScheduler()).subscribe([&](const auto& item) {
        EXPECT_EQ(next[item.first]++, item.second);
    });
    std::atomic<int> running{2};
    const auto produce = [&](int name) {
        repeat([&](int i) { subject.onNext({name, i}); });
        --running;
    };
    std::thread first(produce, 0), second(produce, 1);
    while (running > 0) platform_->runUntilIdle();
    first.join(), second.join();
    platform_->runUntilIdle();
    EXPECT_EQ(next, (std::map<int, int>{{0, rounds}, {1, rounds}}));
}

TEST_F(Threading, LetsDisposeRaceWithTheItemOfSubscribeOn) {
    repeat([&](int) {
        PublishSubject<int> subject;
        const auto handle = subject.subscribeOn(makeScheduler()).observeOn(makeScheduler()).subscribe();
        std::thread emitter([&] { subject.onNext(1); }), disposer([&] { handle.dispose(); });
        platform_->runUntilIdle();
        emitter.join(), disposer.join();
        platform_->runUntilIdle();
        EXPECT_FALSE(subject.hasObservers());
    });
}

} // namespace corvantile::rx::ThreadingTest
