#include "CorvantileReactive/ConnectableObservable.hpp"
#include "Tests/CorvantileReactive/Recorder.hpp"

namespace corvantile::rx::ConnectableTest {

TEST(Connectables, ShareOneSubscriptionAndItsReplayFromEachConnectionOn) {
    Recorder recorder;
    PublishSubject<int> subject;
    const auto shared = subject.doOn({.onSubscribe = recorder.noting("subscribed")}).replayAll();
    recorder.subscribe<int>(shared, "A");
    EXPECT_EQ(recorder.take(), "");
    const auto connection = shared.connect(), same = shared.connect();
    subject.onNext(1);
    recorder.subscribe<int>(shared, "B");
    subject.onNext(2);
    EXPECT_EQ(recorder.take(), "subscribed, A next 1, B next 1, A next 2, B next 2");

    same.dispose();
    EXPECT_TRUE(connection.isDisposed());
    EXPECT_FALSE(subject.hasObservers());

    recorder.subscribe<int>(shared, "C");
    const auto next = shared.connect();
    connection.dispose();
    subject.onNext(3);
    EXPECT_EQ(recorder.take(), "subscribed, C next 3");
}

} // namespace corvantile::rx::ConnectableTest
