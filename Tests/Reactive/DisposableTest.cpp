#include "Reactive/DisposableSlot.hpp"
#include "Reactive/DisposeBag.hpp"
#include "Reactive/PublishSubject.hpp"
#include "Tests/Reactive/Recorder.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace corvantile::rx {

TEST(Disposables, RunTheirActionOnceForAllCopies) {
    Recorder recorder;
    const auto handle = Disposable::create(recorder.noting("action"));
    const auto copy = handle;
    EXPECT_FALSE(copy.isDisposed());

    handle.dispose();
    copy.dispose();

    EXPECT_EQ(recorder.take(), "action");
    EXPECT_TRUE(copy.isDisposed());
    EXPECT_TRUE(Disposable().isDisposed());
}

TEST(Disposables, ReleaseTheActionThoughTheHandleIsKept) {
    auto captured = std::make_shared<int>();
    const std::weak_ptr<int> watch = captured;
    const auto handle = Disposable::create([captured = std::move(captured)] {});

    handle.dispose();

    EXPECT_TRUE(watch.expired());
}

TEST(Disposables, DisposeOfTheirPartsInTheOrderGiven) {
    Recorder recorder;
    const auto all = Disposable::all(
        {Disposable::create(recorder.noting("1")), Disposable(), Disposable::create(recorder.noting("2"))});

    all.dispose();
    all.dispose();

    EXPECT_EQ(recorder.take(), "1, 2");
}

TEST(Disposables, OfSubscriptionsEndNothingWhenDroppedOrOverwritten) {
    Recorder recorder;
    PublishSubject<int> subject;
    auto handle = recorder.subscribe<int>(subject, "A");
    handle = recorder.subscribe<int>(subject, "B");
    handle = Disposable();

    subject.onNext(1);

    EXPECT_EQ(recorder.take(), "A next 1, B next 1");
}

TEST(Disposables, OfASubscriptionAreDisposedOnceItHasEnded) {
    PublishSubject<int> subject;
    const auto handle = subject.subscribe();
    EXPECT_FALSE(handle.isDisposed());

    subject.onCompleted();

    EXPECT_TRUE(handle.isDisposed());
}

TEST(DisposeBags, DisposeInTheOrderInsertedWhenTheyAreDestroyed) {
    Recorder recorder;
    {
        DisposeBag bag;
        for (const auto* name : {"1", "2", "3"}) bag.insert(Disposable::create(recorder.noting(name)));
        EXPECT_EQ(recorder.take(), "");
    }
    EXPECT_EQ(recorder.take(), "1, 2, 3");
}

TEST(DisposeBags, DisposeAtOnceOfWhatIsInsertedDuringTheirDestruction) {
    Recorder recorder;
    {
        DisposeBag bag;
        bag.insert(Disposable::create([&] {
            bag.insert(Disposable::create(recorder.noting("late")));
            recorder.note("first");
        }));
        bag.insert(Disposable::create(recorder.noting("second")));
    }
    EXPECT_EQ(recorder.take(), "late, first, second");
}

TEST(DisposableSlots, ExchangeWithoutDisposing) {
    Recorder recorder;
    DisposableSlot slot;
    EXPECT_TRUE(slot.isEmpty());

    slot.exchange(Disposable::create(recorder.noting("old")));
    const auto old = slot.exchange(Disposable::create(recorder.noting("new")));
    EXPECT_FALSE(slot.isEmpty());
    EXPECT_EQ(recorder.take(), "");

    slot.disposeAndClear();
    slot.disposeAndClear();
    EXPECT_TRUE(slot.isEmpty());
    EXPECT_EQ(recorder.take(), "new");

    old.dispose();
    EXPECT_EQ(recorder.take(), "old");
}

TEST(DisposableSlots, DisposeOutsideTheirLockAndNotAtTheirEnd) {
    Recorder recorder;
    {
        DisposableSlot slot;
        slot.exchange(Disposable::create([&] {
            recorder.note(slot.isEmpty() ? "empty" : "filled");
            slot.exchange(Disposable::create(recorder.noting("never")));
        }));
        slot.disposeAndClear();
        EXPECT_FALSE(slot.isEmpty());
    }
    EXPECT_EQ(recorder.take(), "empty");
}

} // namespace corvantile::rx
