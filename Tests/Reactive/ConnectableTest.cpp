#include "Reactive/ConnectableObservable.hpp"
#include "Reactive/Factories.hpp"
#include "Reactive/PublishSubject.hpp"
#include "Tests/Reactive/Recorder.hpp"

#include <gtest/gtest.h>

#include <optional>

namespace corvantile::rx {

TEST(Connectables, StaySilentAndLeaveTheSourceAloneUntilConnected) {
    Recorder recorder;
    const auto source = just(1).doOn({.onSubscribe = recorder.noting("subscribed")});
    const auto handle = recorder.subscribe<int>(source.replayAll());
    EXPECT_EQ(recorder.take(), "");

    handle.dispose(); // the connectable is long gone

    EXPECT_EQ(recorder.take(), "disposed");
}

TEST(Connectables, ShareOneSubscriptionAndReplayIt) {
    Recorder recorder;
    PublishSubject<int> subject;
    const auto shared = subject.doOn({.onSubscribe = recorder.noting("subscribed")}).replayAll();
    recorder.subscribe<int>(shared, "A");

    const auto connection = shared.connect();
    const auto same = shared.connect();
    subject.onNext(1);
    recorder.subscribe<int>(shared, "B");
    subject.onNext(2);
    EXPECT_EQ(recorder.take(), "subscribed, A next 1, B next 1, A next 2, B next 2");

    same.dispose();
    EXPECT_TRUE(connection.isDisposed());
    EXPECT_FALSE(subject.hasObservers());
}

TEST(Connectables, BeginAnewAfterTheirConnectionWasDisposed) {
    Recorder recorder;
    PublishSubject<int> subject;
    const auto shared = subject.replayAll();
    const auto old = recorder.subscribe<int>(shared, "old");
    const auto connection = shared.connect();
    subject.onNext(1);
    recorder.take();

    connection.dispose();
    recorder.subscribe<int>(shared, "new");
    const auto next = shared.connect();
    connection.dispose();
    subject.onNext(2);

    EXPECT_EQ(recorder.take(), "new next 2");
    EXPECT_FALSE(next.isDisposed());
    EXPECT_FALSE(old.isDisposed());
}

TEST(Connectables, AreDismantledBeforeTheTerminalArrives) {
    Recorder recorder;
    PublishSubject<int> subject;
    const auto shared = subject.replayAll();
    const auto connection = shared.connect();
    subject.onNext(1);
    shared.subscribe(nullptr, nullptr, [&] {
        recorder.note(connection.isDisposed() ? "dismantled" : "connected");
        recorder.subscribe<int>(shared, "late");
    });

    subject.onCompleted();

    EXPECT_EQ(recorder.take(), "dismantled");
}

TEST(Connectables, DeliverASourceThatEndsInsideConnect) {
    Recorder recorder;
    const auto shared = just(1).replayAll();
    recorder.subscribe<int>(shared);

    const auto connection = shared.connect();

    EXPECT_EQ(recorder.take(), "next 1, completed, disposed");
    EXPECT_TRUE(connection.isDisposed());
}

TEST(Connectables, MayLoseTheOnlyHandleOfTheirConnectionWhileThatIsDisposed) {
    Recorder recorder;
    Disposable connection;
    connection = PublishSubject<int>()
                     .doOn({.onDispose = [&] { connection = Disposable(), recorder.note("left"); }})
                     .replayAll()
                     .connect();

    connection.dispose();

    EXPECT_EQ(recorder.take(), "left");
}

TEST(Connectables, GoOnWhileTheirSourceLives) {
    Recorder recorder;
    PublishSubject<int> subject;
    {
        const auto shared = subject.map([](int value) { return value; }).replayAll();
        recorder.subscribe<int>(shared);
        (void)shared.connect();
    }

    subject.onNext(1);
    subject.onCompleted();

    EXPECT_EQ(recorder.take(), "next 1, completed, disposed");
}

} // namespace corvantile::rx
