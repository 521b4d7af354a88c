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
        const auto emitAndEnd = [&](const auto&...) {
            recorder_.note("emits");
            producer->onNext(2);
            end();
        };
        stream.subscribe(emitAndEnd, emitAndEnd, emitAndEnd);
        end();
        emitAndEnd();
        EXPECT_EQ(take(), "emits, emits");
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
}

TEST_F(UnhandledErrors, GoToTheHookOfTheProcessAndEndTheSubscription) {
    const auto fail = [&] {
        error<int>(failure("boom")).subscribe(nullptr, nullptr, nullptr, recorder_.noting("disposed"));
    };
    Hooks::setUnhandledError(
        [&](const auto& error) { recorder_.note("hook " + localizedDescription(error)); });
    fail();
    EXPECT_EQ(take(), "hook boom, disposed");

    platform_ = TestPlatform::relaunch(std::move(platform_)); // the stock hook prints, with assertions
    fail();
    EXPECT_EQ(take(), "disposed");
    std::vector<std::string> printed;
#ifndef NDEBUG
    printed = {"Unhandled error happened: " + describe(failure("boom"))};
#endif
    EXPECT_EQ(platform_->console().lines(), printed);
}

} // namespace corvantile::rx
