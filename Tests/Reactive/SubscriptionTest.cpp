#include "Platform/Foundation/Console.hpp"
#include "Reactive/CombineLatest.hpp"
#include "Reactive/Factories.hpp"
#include "Reactive/Hooks.hpp"
#include "Reactive/PublishSubject.hpp"
#include "Reactive/ReplaySubject.hpp"
#include "Tests/Reactive/PlatformTest.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace corvantile::rx {

namespace {

Observable<int> mapped(const Observable<int>& stream) {
    return stream.map([](int value) { return value; });
}

} // namespace

TEST(Subscription, DeliversNothingAfterATerminal) {
    Recorder recorder;
    for (const bool fails : {false, true}) {
        std::optional<AnyObserver<int>> producer;
        const auto stream = create<int>([&](const AnyObserver<int>& observer) {
            producer = observer;
            return Disposable();
        });
        recorder.subscribe(stream);
        recorder.subscribe(mapped(stream));

        producer->onNext(1);
        fails ? producer->onError(failure("boom")) : producer->onCompleted();
        producer->onNext(2);
        producer->onError(failure("late"));
        producer->onCompleted();
        const std::string end = fails ? "error boom" : "completed";
        EXPECT_EQ(recorder.take(), "next 1, " + end + ", disposed");
    }
}

TEST(Subscription, DropsWhatAProducerEmitsFromInsideItsOwnTerminal) {
    Recorder recorder;
    std::optional<AnyObserver<int>> producer;
    const auto stream = create<int>([&](const AnyObserver<int>& observer) {
        producer = observer;
        return Disposable();
    });
    stream.doOn({.onNext = [&](int value) { recorder.note("do " + std::to_string(value)); }})
        .subscribe([](int) {}, nullptr,
                   [&] {
                       recorder.note("completed");
                       producer->onNext(2);
                       producer->onCompleted();
                   });

    producer->onCompleted();

    EXPECT_EQ(recorder.take(), "completed");
}

TEST(Subscription, RunsOnDisposedBeforeTheTeardownAtATerminalAndAfterItAtADispose) {
    Recorder recorder;
    PublishSubject<int> subject;
    const auto stream = subject.doOn({.onDispose = recorder.noting("left")});

    recorder.subscribe(stream).dispose();
    EXPECT_EQ(recorder.take(), "left, disposed");

    const auto handle = recorder.subscribe(stream);
    subject.onCompleted();
    handle.dispose();
    EXPECT_EQ(recorder.take(), "completed, disposed, left");
}

TEST(Subscription, EndsInsideSubscribeWithASourceThatDoes) {
    const struct {
        Observable<int> source;
        std::string expected;
    } cases[] = {
        {just(1), "next 1, completed, disposed, subscribed, left"},
        {empty<int>(), "completed, disposed, subscribed, left"},
        {error<int>(failure("boom")), "error boom, disposed, subscribed, left"},
    };
    for (const auto& [source, expected] : cases) {
        Recorder recorder;
        const auto handle = recorder.subscribe(source.doOn(
            {.onSubscribed = recorder.noting("subscribed"), .onDispose = recorder.noting("left")}));

        EXPECT_EQ(recorder.take(), expected);
        EXPECT_TRUE(handle.isDisposed());
    }
}

TEST(Subscription, DisposesOfAProductionOnceItsBodyHasReturned) {
    Recorder recorder;
    std::optional<AnyObserver<int>> producer;
    const auto stream = create<int>([&](const AnyObserver<int>& observer) {
        producer = observer;
        observer.onNext(1);
        recorder.note("body");
        return Disposable::create(recorder.noting("stopped"));
    });

    recorder.subscribe(stream.take(1));
    EXPECT_EQ(recorder.take(), "next 1, completed, disposed, body, stopped");

    recorder.subscribe(stream).dispose();
    EXPECT_EQ(recorder.take(), "next 1, body, stopped, disposed");

    recorder.subscribe(stream);
    producer->onCompleted();
    EXPECT_EQ(recorder.take(), "next 1, body, completed, disposed, stopped");
}

TEST(Subscription, MayDisposeOfItselfInsideItsHandlerWhichRunsOn) {
    Recorder recorder;
    for (const bool staged : {false, true}) {
        PublishSubject<int> subject;
        Disposable handle;
        handle = recorder.subscribe<int>(staged ? mapped(subject) : subject, "", [&](int value) {
            handle.dispose();
            recorder.note("runs on");
            if (value == 1) subject.onNext(2);
        });

        subject.onNext(1);
        subject.onCompleted();

        EXPECT_EQ(recorder.take(), "next 1, disposed, runs on");
    }
}

TEST(Subscription, MayLoseItsOnlyHandleWhileThatIsDisposed) {
    Recorder recorder;
    Disposable handle;
    const auto lose = [&] { handle = Disposable(); };
    const Observable<int> streams[] = {
        PublishSubject<int>().doOn({.onDispose = lose}),
        create<int>([&](const AnyObserver<int>&) { return Disposable::create(lose); }),
        combineLatest(just(1), PublishSubject<int>().doOn({.onDispose = lose})).map([](auto&) { return 1; }),
    };
    for (const auto& stream : streams) {
        handle = recorder.subscribe(stream);
        handle.dispose();
        EXPECT_EQ(recorder.take(), "disposed");
        EXPECT_TRUE(handle.isDisposed());
    }
}

TEST(Subscription, GivesItsHandleOnlyAfterASynchronousDelivery) {
    Recorder recorder;
    const auto subject = ReplaySubject<int>::create(1);
    subject.onNext(1);
    Disposable handle;
    handle = recorder.subscribe<int>(subject, "", [&](int) { handle.dispose(); });

    subject.onNext(2);
    subject.onNext(3);

    EXPECT_EQ(recorder.take(), "next 1, next 2, disposed");
}

TEST(Subscription, TakesAnyChoiceOfHandlers) {
    PublishSubject<int> subject;
    int sum = 0;
    bool isCompleted = false;
    subject.subscribe();
    subject.subscribe([&](int value) { sum += value; });
    subject.subscribe(nullptr, nullptr, [&] { isCompleted = true; });

    subject.onNext(2);
    subject.onCompleted();

    EXPECT_EQ(sum, 2);
    EXPECT_TRUE(isCompleted);
}

using UnhandledErrors = PlatformTest;

TEST_F(UnhandledErrors, GoToTheHookAndEndTheSubscription) {
    Hooks::setUnhandledError([this](const std::exception_ptr& error) {
        recorder_.note("unhandled " + localizedDescription(error));
    });
    const auto onDisposed = recorder_.noting("disposed");

    error<int>(failure("boom")).subscribe([](int) {}, nullptr, nullptr, onDisposed);

    EXPECT_EQ(recorder_.take(), "unhandled boom, disposed");
}

TEST_F(UnhandledErrors, ArePrintedByTheStockHookOfBuildsWithAssertions) {
    Hooks::setUnhandledError([this](const std::exception_ptr&) { recorder_.note("replaced"); });
    Hooks::setUnhandledError(nullptr);

    error<int>(failure("boom")).subscribe();

    std::vector<std::string> expected;
#ifndef NDEBUG
    expected = {"Unhandled error happened: " + describe(failure("boom"))};
#endif
    EXPECT_EQ(platform_->console().lines(), expected);
    EXPECT_EQ(recorder_.take(), "");
}

TEST_F(UnhandledErrors, MeetTheStockHookAgainInANewProcess) {
    Hooks::setUnhandledError([this](const std::exception_ptr&) { recorder_.note("hook"); });
    platform_ = TestPlatform::relaunch(std::move(platform_));

    error<int>(failure("boom")).subscribe();

    EXPECT_EQ(recorder_.take(), "");
}

} // namespace corvantile::rx
