#include "Reactive/CombineLatest.hpp"
#include "Reactive/Factories.hpp"
#include "Reactive/PublishSubject.hpp"
#include "Reactive/ReplaySubject.hpp"
#include "Tests/Reactive/Recorder.hpp"

#include <gtest/gtest.h>

#include <string>

namespace corvantile::rx {

TEST(CombineLatest, PairsTheLatestElementsUntilNoneCanFollow) {
    using Side = PublishSubject<int>;
    const struct {
        const char* name;
        void (*emit)(const Side& a, const Side& b);
        std::string expected;
    } cases[] = {
        {"every element once both have one",
         [](const Side& a, const Side& b) {
             a.onNext(1), a.onNext(2), b.onNext(3), a.onNext(4), b.onNext(5);
         },
         "next (2, 3), next (4, 3), next (4, 5)"},
        {"goes on while one side lives",
         [](const Side& a, const Side& b) { a.onNext(1), b.onNext(2), a.onCompleted(), b.onNext(3); },
         "next (1, 2), next (1, 3)"},
        {"completes with the second side",
         [](const Side& a, const Side& b) { a.onNext(1), b.onNext(2), a.onCompleted(), b.onCompleted(); },
         "next (1, 2), completed, disposed"},
        {"waits when a side ends without an element", [](const Side& a, const Side&) { a.onCompleted(); },
         ""},
        {"completes with the other's element then",
         [](const Side& a, const Side& b) { a.onCompleted(), b.onNext(1), b.onNext(2); },
         "completed, disposed"},
        {"fails at once",
         [](const Side& a, const Side& b) { a.onNext(1), b.onError(failure("b")), a.onNext(2); },
         "error b, disposed"},
    };
    for (const auto& [name, emit, expected] : cases) {
        SCOPED_TRACE(name);
        Recorder recorder;
        PublishSubject<int> a, b;
        recorder.subscribe(combineLatest(a, b));

        emit(a, b);

        EXPECT_EQ(recorder.take(), expected);
        EXPECT_EQ(b.hasObservers(), !expected.ends_with("disposed"));
    }
}

TEST(CombineLatest, CollapsesTheReplayOfItsFirstSide) {
    Recorder recorder;
    const auto a = ReplaySubject<std::string>::createUnbounded();
    const auto b = ReplaySubject<int>::createUnbounded();
    a.onNext("x"), a.onNext("y"), b.onNext(1), b.onNext(2);

    recorder.subscribe(combineLatest(a, b));
    recorder.subscribe(combineLatest(a, b).take(1), "one");

    EXPECT_EQ(recorder.take(),
              R"(next ("y", 1), next ("y", 2), one next ("y", 1), one completed, one disposed)");
}

TEST(CombineLatest, SubscribesToBothSidesThoughTheFirstHasFailed) {
    Recorder recorder;
    PublishSubject<int> b;
    const auto noted = b.doOn({.onSubscribe = recorder.noting("b"), .onDispose = recorder.noting("left")});

    recorder.subscribe(combineLatest(error<int>(failure("a")), noted));

    EXPECT_EQ(recorder.take(), "error a, disposed, b, left");
}

TEST(CombineLatest, NestsWhatItsHandlerEmits) {
    Recorder recorder;
    PublishSubject<int> a, b;
    const auto sum = combineLatest(a, b, [](int first, int second) { return first + second; });
    recorder.subscribe<int>(sum, "", [&](int value) {
        if (value == 3) b.onNext(10);
        recorder.note("handled " + std::to_string(value));
    });

    a.onNext(1);
    b.onNext(2);

    EXPECT_EQ(recorder.take(), "next 3, next 11, handled 11, handled 3");
}

TEST(CombineLatest, LeavesBothSidesWhenDisposedThoughOneIsGone) {
    Recorder recorder;
    PublishSubject<int> b;
    const auto handle = [&] {
        const PublishSubject<int> a;
        return recorder.subscribe(combineLatest(a.doOn({.onDispose = recorder.noting("a left")}),
                                                b.doOn({.onDispose = recorder.noting("b left")})));
    }();

    handle.dispose();

    EXPECT_EQ(recorder.take(), "a left, b left, disposed");
    EXPECT_FALSE(b.hasObservers());
}

} // namespace corvantile::rx
