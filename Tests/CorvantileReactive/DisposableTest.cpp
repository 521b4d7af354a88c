#include "CorvantileReactive/DisposableSlot.hpp"
#include "CorvantileReactive/DisposeBag.hpp"
#include "Tests/CorvantileReactive/Recorder.hpp"

namespace corvantile::rx::DisposableTest {

TEST(Disposables, RunTheirActionOnceForAllCopiesAndLetItGo) {
    Recorder recorder;
    auto captured = std::make_shared<int>();
    const std::weak_ptr<int> watch = captured;
    const auto handle = Disposable::create([&, captured = std::move(captured)] { recorder.note("action"); });
    const auto both = Disposable::all({Disposable::create(recorder.noting("first")), Disposable(), handle});

    both.dispose();
    handle.dispose();

    EXPECT_EQ(recorder.take(), "first, action");
    EXPECT_TRUE(watch.expired() && handle.isDisposed() && Disposable().isDisposed());
}

TEST(DisposeBags, DisposeInTheOrderInsertedWhenTheyAreDestroyedAndAtOnceMeanwhile) {
    Recorder recorder;
    {
        DisposeBag bag;
        bag.insert(Disposable::create([&] {
            bag.insert(Disposable::create(recorder.noting("late")));
            recorder.note("first");
        }));
        bag.insert(Disposable::create(recorder.noting("second")));
        EXPECT_EQ(recorder.take(), "");
    }
    EXPECT_EQ(recorder.take(), "late, first, second");
}

TEST(DisposableSlots, DisposeOnlyWhenToldAndOutsideTheirLock) {
    Recorder recorder;
    {
        DisposableSlot slot;
        slot.exchange(Disposable::create(recorder.noting("old")));
        const auto old = slot.exchange(Disposable::create([&] {
            recorder.note(slot.isEmpty() ? "empty" : "filled");
            slot.exchange(Disposable::create(recorder.noting("never")));
        }));
        EXPECT_EQ(recorder.take(), "");

        slot.disposeAndClear();
        EXPECT_FALSE(slot.isEmpty());
        old.dispose();
    }
    EXPECT_EQ(recorder.take(), "empty, old");
}

} // namespace corvantile::rx::DisposableTest
