#include "Platform/Foundation/NSError.hpp"
#include "Reactive/CombineLatest.hpp"
#include "Reactive/Hooks.hpp"
#include "Tests/Reactive/PlatformTest.hpp"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvantile::rx {

using Subscription = PlatformTest;
using UnhandledErrors = PlatformTest;

TEST_F(Subscription, DeliversNothingAfterItsTerminalNorFromInsideIt) {
    std::optional<AnyObserver<int>> producer;
    const auto stream = create<int>([&](const auto& observer) {
        producer = observer;
        return Disposable();
    });
    for (const bool fails : {false, true}) {
        const auto end = [&] { fails ? producer->onError(failure("boom")) : producer->onCompleted(); };
        const auto handler = [&](const auto&...) {
            recorder_.note("end");
            producer->onNext(2);
            end();
        };
        stream.doOn({.onNext = [&](int value) { recorder_.note(std::to_string(value)); }})
            .subscribe(nullptr, handler, handler);

        producer->onNext(1);
        end();
        producer->onNext(3);
        end();

        EXPECT_EQ(take(), "1, end");
    }
}

TEST_F(Subscription, RunsOnDisposedBeforeTheTeardownAtATerminalAndAfterItAtADispose) {
    PublishSubject<int> subject;
    const auto stream = subject.doOn({.onDispose = recorder_.noting("left")});
    recorder_.subscribe(stream).dispose();
    EXPECT_EQ(take(), "left, disposed");

    const auto handle = recorder_.subscribe(stream);
    subject.onCompleted();
    EXPECT_TRUE(handle.isDisposed());
    handle.dispose();
    EXPECT_EQ(take(), "completed, disposed, left");
}

TEST_F(Subscription, EndsInsideSubscribeWithASourceThatDoes) {
    const std::pair<Observable<int>, std::string> cases[] = {
        {just(1), "next 1, completed"}, {empty<int>(), "completed"}, {error<int>(failure("no")), "error no"}};
    const auto subscribed = recorder_.noting("subscribed"), left = recorder_.noting("left");
    for (const auto& [source, expected] : cases) {
        const auto handle = recorder_.subscribe(source.doOn({.onSubscribed = subscribed, .onDispose = left}));
        EXPECT_EQ(take(), expected + ", disposed, subscribed, left");
        EXPECT_TRUE(handle.isDisposed());
    }
}

TEST_F(Subscription, DisposesOfAProductionOnceItsBodyHasReturned) {
    std::optional<AnyObserver<int>> producer;
    const auto stream = create<int>([&](const auto& observer) {
        producer = observer;
        observer.onNext(1);
        recorder_.note("body");
        return Disposable::create(recorder_.noting("stopped"));
    });
    recorder_.subscribe(stream.take(1));
    EXPECT_EQ(take(), "next 1, completed, disposed, body, stopped");
    recorder_.subscribe(stream).dispose();
    EXPECT_EQ(take(), "next 1, body, stopped, disposed");
    recorder_.subscribe(stream);
    producer->onCompleted();
    EXPECT_EQ(take(), "next 1, body, completed, disposed, stopped");
}

TEST_F(Subscription, MayLoseItsOnlyHandleWhileThatIsDisposed) {
    Disposable handle;
    const auto lose = [&] { handle = Disposable(); };
    const auto losing = PublishSubject<int>().doOn({.onDispose = lose});
    const Observable<int> streams[] = {losing,
                                       create<int>([&](const auto&) { return Disposable::create(lose); }),
                                       combineLatest(just(1), losing, [](int a, int) { return a; })};
    for (const auto& stream : streams) {
        handle = recorder_.subscribe(stream);
        handle.dispose();
        EXPECT_EQ(take(), "disposed");
    }
    handle = losing.replayAll().connect();
    handle.dispose();
}

TEST_F(UnhandledErrors, GoToTheHookAndEndTheSubscription) {
    const auto fail = [&] {
        const auto noted = recorder_.noting("disposed");
        error<int>(failure("boom")).subscribe(nullptr, nullptr, nullptr, noted);
    };
    const auto hook = [&](const auto& error) { recorder_.note("hook " + localizedDescription(error)); };
    Hooks::setUnhandledError(hook);
    fail();
    EXPECT_EQ(take(), "hook boom, disposed");

    // The stock hook prints in builds with assertions. An empty hook brings it back, and so does a new
    // process.
    Hooks::setUnhandledError(nullptr);
    fail();
    std::vector<std::string> printed;
#ifndef NDEBUG
    printed = {"Unhandled error happened: " + describe(failure("boom"))};
#endif
    EXPECT_EQ(platform_->console().lines(), printed);

    Hooks::setUnhandledError(hook);
    platform_ = TestPlatform::relaunch(std::move(platform_));
    fail();
    EXPECT_EQ(take(), "disposed, disposed");
}

} // namespace corvantile::rx
