#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantileReactive/CombineLatest.hpp"
#include "Tests/CorvantileReactive/PlatformTest.hpp"

namespace corvantile::rx::SubscriptionTest {

using Subscription = PlatformTest;
using UnhandledErrors = PlatformTest;

TEST_F(Subscription, DeliversNothingAfterItsTerminalNorFromInsideIt) {
    std::optional<AnyObserver<int>> producer;
    const auto stream = create<int>([&](const auto& observer) {
        producer = observer;
        return Disposable::create(recorder_.noting("left"));
    });
    for (const bool fails : {false, true}) {
        const auto end = [&] { fails ? producer->onError(failure("boom")) : producer->onCompleted(); };
        const auto emitAndEnd = [&](const auto&...) {
            recorder_.note("emits");
            producer->onNext(2);
            end();
        };
        stream.subscribe(emitAndEnd, emitAndEnd, emitAndEnd, recorder_.noting("disposed"));
        end();
        emitAndEnd();
        EXPECT_EQ(take(), "emits, disposed, left, emits");
    }
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
    EXPECT_EQ(lines(), printed);
}

} // namespace corvantile::rx::SubscriptionTest
