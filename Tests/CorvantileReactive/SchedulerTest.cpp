#include "CorvantileReactive/DisposeBag.hpp"
#include "CorvantileReactive/MainScheduler.hpp"
#include "Tests/CorvantileReactive/PlatformTest.hpp"

namespace corvantile::rx::SchedulerTest {

using namespace std::chrono_literals;

class Schedulers : public PlatformTest {
protected:
    // Also says whether this runs on `scheduler_`.
    void note(const std::string& text) { recorder_.note(text + (queue_->isCurrent() ? " on s" : "")); }
    Observable<int> noted(const Observable<int>& stream, const std::string& name = "") {
        return stream.doOn({.onSubscribe = [this, name] { note(name + "subscribed"); },
                            .onDispose = [this, name] { note(name + "left"); }});
    }
    Disposable subscribe(const Observable<int>& stream) {
        return stream.subscribe([this](int value) { note(std::to_string(value)); },
                                [this](const auto&) { note("error"); }, [this] { note("completed"); },
                                [this] { note("disposed"); });
    }

    const std::shared_ptr<DispatchQueue> queue_ =
        platform_->ports().queues->makeSerial("s", QualityOfService::standard);
    const std::shared_ptr<Scheduler> scheduler_ = std::make_shared<SerialDispatchQueueScheduler>(queue_);
};

using ObserveOn = Schedulers;
using SubscribeOn = Schedulers;

TEST_F(Schedulers, RunActionsLaterAndInOrderUnlessDisposed) {
    auto scheduler = makeScheduler();
    Disposable own;
    own = scheduler->schedule([&] {
        own.dispose();
        scheduler->post(recorder_.noting("3"));
        recorder_.note("1");
    });
    const auto cancelled = scheduler->schedule(recorder_.noting("cancelled"));
    const auto timer = scheduler->scheduleRelative(1s, recorder_.noting("cancelled timer"));
    (void)scheduler->schedule([&] { scheduler.reset(), recorder_.note("2"); });
    EXPECT_EQ(take(), "");

    cancelled.dispose();
    timer.dispose();
    platform_->advance(2s);
    EXPECT_EQ(take(), "1, 2, 3");
}

TEST_F(Schedulers, MayLoseTheirOwnerInItsOwnItem) {
    struct Owner {
        std::shared_ptr<Scheduler> scheduler = makeScheduler();
        PublishSubject<int> subject;
        DisposeBag bag;
    };
    auto owner = std::make_shared<Owner>();
    owner->bag.insert(subscribe(noted(owner->subject).observeOn(owner->scheduler).map([&](int value) {
        owner.reset();
        return value;
    })));
    owner->subject.onNext(1), owner->subject.onNext(2);
    EXPECT_EQ(run(), "subscribed, left, disposed");
}

TEST_F(Schedulers, OfTheMainQueueRunInlineOnlyWhenIdle) {
    const auto main = MainScheduler::instance();
    main->post([&] { main->post(recorder_.noting("nested")), recorder_.note("1"); });
    main->post(recorder_.noting("2"));
    EXPECT_EQ(take(), "1");
    EXPECT_EQ(run(), "nested, 2");

    makeScheduler()->post([&] { main->post(recorder_.noting("main")), recorder_.note("another queue"); });
    EXPECT_EQ(run(), "another queue, main");

    MainScheduler::asyncInstance()->post(recorder_.noting("queued"));
    EXPECT_EQ(take(), "");
    EXPECT_EQ(run(), "queued");
}

TEST_F(ObserveOn, KeepsTerminalsBehindTheElements) {
    PublishSubject<int> subject;
    subscribe(noted(subject).observeOn(scheduler_));
    subject.onNext(1), subject.onNext(2), subject.onError(failure("no"));
    EXPECT_EQ(take(), "subscribed, left"); // what stands above has ended
    EXPECT_EQ(run(), "1 on s, 2 on s, error on s, disposed on s");
}

TEST_F(ObserveOn, DeliversWhatIsEmittedMeanwhileInALaterItem) {
    PublishSubject<int> subject;
    subscribe(subject.observeOn(scheduler_).doOn({.onNext = [&](int value) {
        if (value != 1) return;
        subject.onNext(3);
        scheduler_->post(recorder_.noting("posted meanwhile"));
    }}));
    subject.onNext(1);
    scheduler_->post(recorder_.noting("posted before"));
    subject.onNext(2);
    EXPECT_EQ(run(), "1 on s, 2 on s, posted before, 3 on s, posted meanwhile");
    subject.onNext(4);
    EXPECT_EQ(run(), "4 on s");
}

TEST_F(ObserveOn, DropsTheRestWhenDisposedAndLeavesAtOnce) {
    PublishSubject<int> subject;
    Disposable handle;
    handle = subscribe(noted(subject).observeOn(scheduler_).doOn({.onNext = [&](int value) {
        if (value == 2) handle.dispose();
    }}));
    subject.onNext(1), subject.onNext(2), subject.onNext(3);
    EXPECT_EQ(run(), "subscribed, 1 on s, left on s, disposed on s");
}

TEST_F(SubscribeOn, SubscribesAndLeavesOnItsScheduler) {
    PublishSubject<int> subject;
    const auto handle = subscribe(noted(noted(subject, "upper ").subscribeOn(scheduler_), "lower "));
    EXPECT_EQ(take(), "lower subscribed");
    EXPECT_EQ(run(), "upper subscribed on s");

    subject.onNext(1);
    scheduler_->post([&] { handle.dispose(), subject.onNext(2); });
    scheduler_->post(recorder_.noting("queued before"));
    EXPECT_EQ(run(), "1, lower left on s, disposed on s, queued before, upper left on s");
    EXPECT_FALSE(subject.hasObservers());
}

TEST_F(SubscribeOn, LeavesLaterAlsoAfterATerminalAndNeverSubscribesOnceDisposed) {
    subscribe(noted(just(1)).subscribeOn(scheduler_)).dispose();
    EXPECT_EQ(run(), "disposed");

    PublishSubject<int> subject;
    subscribe(noted(subject).subscribeOn(scheduler_).take(1));
    EXPECT_EQ(run(), "subscribed on s");
    subject.onNext(1), subject.onNext(2);
    EXPECT_EQ(take(), "1, completed, disposed");
    EXPECT_EQ(run(), "left on s");
}

} // namespace corvantile::rx::SchedulerTest
