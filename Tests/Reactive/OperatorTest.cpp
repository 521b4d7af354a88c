#include "Reactive/CombineLatest.hpp"
#include "Reactive/Factories.hpp"
#include "Reactive/PublishSubject.hpp"
#include "Reactive/ReplaySubject.hpp"
#include "Tests/Reactive/Recorder.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

namespace corvantile::rx {

TEST(Operators, TransformAndSelect) {
    const auto isOdd = [](int value) { return value % 2 != 0; };
    const struct {
        std::function<Observable<int>(const Observable<int>&)> apply;
        std::string expected;
    } cases[] = {
        {[](const auto& s) { return s.map([](int value) { return 10 * value; }); },
         "next 10, next 10, next 30, next 20, next 10, next 10"},
        {[&](const auto& s) { return s.filter(isOdd); }, "next 1, next 1, next 3, next 1, next 1"},
        {[&](const auto& s) { return s.skipWhile(isOdd); }, "next 2, next 1, next 1"},
        {[](const auto& s) { return s.distinctUntilChanged(); }, "next 1, next 3, next 2, next 1"},
        {[](const auto& s) { return s.take(9); }, "next 1, next 1, next 3, next 2, next 1, next 1"},
    };
    for (const auto& [apply, expected] : cases) {
        Recorder recorder;
        PublishSubject<int> subject;
        const auto stream = apply(subject);
        // Each subscription has a state of its own: one that is further on does not matter.
        const auto other = stream.subscribe();
        subject.onNext(2);
        other.dispose();
        recorder.subscribe(stream);

        for (const int value : {1, 1, 3, 2, 1, 1}) subject.onNext(value);
        subject.onCompleted();

        EXPECT_EQ(recorder.take(), expected + ", completed, disposed");
    }
}

TEST(Operators, TurnWhatTheirFunctionThrowsIntoAnErrorAndLeave) {
    const auto fails = [](int) -> bool { throw std::runtime_error("boom"); };
    const std::function<Observable<int>(const Observable<int>&)> cases[] = {
        [&](const auto& s) { return s.map([&](int value) { return fails(value) ? 1 : 0; }); },
        [&](const auto& s) { return s.filter(fails); },
        [&](const auto& s) { return s.skipWhile(fails); },
        [&](const auto& s) { return s.doOn({.onNext = fails}); },
        [&](const auto& s) {
            return combineLatest(s, just(2), [&](int a, int) { return fails(a) ? 1 : 0; });
        },
    };
    for (const auto& apply : cases) {
        Recorder recorder;
        PublishSubject<int> subject;
        recorder.subscribe(apply(subject));

        subject.onNext(1);

        EXPECT_EQ(recorder.take(), "error boom, disposed");
        EXPECT_FALSE(subject.hasObservers());
    }
}

TEST(SkipWhile, AsksNoMoreAfterTheFirstNo) {
    Recorder recorder;
    PublishSubject<int> subject;
    recorder.subscribe(subject.skipWhile([&](int value) {
        recorder.note("asked " + std::to_string(value));
        return value < 2;
    }));

    for (const int value : {1, 2, 1}) subject.onNext(value);

    EXPECT_EQ(recorder.take(), "asked 1, asked 2, next 2, next 1");
}

TEST(Take, OfNothingCompletesWithoutSubscribing) {
    Recorder recorder;

    recorder.subscribe(just(1).doOn({.onSubscribe = recorder.noting("subscribed")}).take(0));

    EXPECT_EQ(recorder.take(), "completed, disposed");
}

TEST(TakeDeathTest, RejectsANegativeCount) {
    EXPECT_DEATH((void)just(1).take(-1), "Take:[0-9]+: Fatal error: take needs");
}

TEST(Take, LeavesTheSourceOnlyAfterItsCompletion) {
    Recorder recorder;
    PublishSubject<int> subject;
    const auto where = [&] { recorder.note(subject.hasObservers() ? "subscribed" : "left"); };
    subject.take(1).subscribe([&](int) { where(); }, nullptr, where, where);

    subject.onNext(1);
    where();

    EXPECT_EQ(recorder.take(), "subscribed, subscribed, subscribed, left");
}

TEST(Take, CountsWhatItsHandlerEmits) {
    const struct {
        long long count;
        bool completes;
        std::string expected;
    } cases[] = {{1, false, "next 1, completed, disposed"},
                 {2, false, "next 1, next 2, completed, disposed"},
                 {3, false, "next 1, next 2, next 3, completed, disposed"},
                 {1, true, "next 1, completed, disposed"},
                 {2, true, "next 1, completed, disposed"}};
    for (const auto& [count, completes, expected] : cases) {
        Recorder recorder;
        PublishSubject<int> subject;
        const auto react = [&, completes = completes](int value) {
            completes ? subject.onCompleted() : subject.onNext(value + 1);
        };
        recorder.subscribe<int>(subject.take(count), "", react);

        subject.onNext(1);

        EXPECT_EQ(recorder.take(), expected);
    }
}

TEST(Take, CutsALongerReplayShort) {
    Recorder recorder;
    const auto subject = ReplaySubject<int>::create(3);
    for (const int value : {1, 2, 3}) subject.onNext(value);

    recorder.subscribe(subject.take(1));

    EXPECT_EQ(recorder.take(), "next 1, completed, disposed");
    EXPECT_FALSE(subject.hasObservers());
}

namespace {

Observable<int> noted(Recorder& recorder, const Observable<int>& stream) {
    return stream.doOn({.onNext = [&](int) { recorder.note("onNext"); },
                        .afterNext = [&](int) { recorder.note("afterNext"); },
                        .onError = [&](const auto&) { recorder.note("onError"); },
                        .afterError = [&](const auto&) { recorder.note("afterError"); },
                        .onCompleted = recorder.noting("onCompleted"),
                        .afterCompleted = recorder.noting("afterCompleted"),
                        .onSubscribe = recorder.noting("onSubscribe"),
                        .onSubscribed = recorder.noting("onSubscribed"),
                        .onDispose = recorder.noting("onDispose")});
}

} // namespace

TEST(DoOn, RunsBeforeAndAfterEachEvent) {
    Recorder recorder;
    PublishSubject<int> first, second;
    recorder.subscribe(noted(recorder, first));
    EXPECT_EQ(recorder.take(), "onSubscribe, onSubscribed");
    first.onNext(1);
    EXPECT_EQ(recorder.take(), "onNext, next 1, afterNext");
    first.onCompleted();
    EXPECT_EQ(recorder.take(), "onCompleted, completed, disposed, afterCompleted, onDispose");

    recorder.subscribe(noted(recorder, second).map([](int value) { return value; }));
    recorder.take();
    second.onError(failure("boom"));
    EXPECT_EQ(recorder.take(), "onError, error boom, disposed, onDispose, afterError");
}

TEST(DoOn, TurnsATerminalWhoseHandlerThrowsIntoAnError) {
    Recorder recorder;
    const auto boom = [] { throw std::runtime_error("boom"); };

    recorder.subscribe(empty<int>().doOn({.onCompleted = boom}));
    recorder.subscribe(error<int>(failure("first")).doOn({.onError = [&](const auto&) { boom(); }}));

    EXPECT_EQ(recorder.take(), "error boom, disposed, error boom, disposed");
}

TEST(DoOn, LeavesTheUpperOperatorFirst) {
    Recorder recorder;
    PublishSubject<int> subject;
    const auto handle = recorder.subscribe(
        subject.doOn({.onDispose = recorder.noting("upper")}).doOn({.onDispose = recorder.noting("lower")}));

    handle.dispose();
    handle.dispose();

    EXPECT_EQ(recorder.take(), "upper, lower, disposed");
}

} // namespace corvantile::rx
