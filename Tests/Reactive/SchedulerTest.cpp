#include "Reactive/DisposeBag.hpp"
#include "Reactive/Factories.hpp"
#include "Reactive/MainScheduler.hpp"
#include "Reactive/PublishSubject.hpp"
#include "Reactive/ReplaySubject.hpp"
#include "Tests/Reactive/PlatformTest.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvantile::rx {

using namespace std::chrono_literals;

namespace {

class Schedulers : public PlatformTest {
protected:
    // A scheduler that tells where code runs: its queue's name is in the note.
    std::shared_ptr<Scheduler> named(const std::string& name) {
        queues_.push_back(platform_->ports().queues->makeSerial(name, QualityOfService::standard));
        return std::make_shared<SerialDispatchQueueScheduler>(queues_.back());
    }
    void noteWhere(const std::string& text) {
        std::string where = "main";
        for (const auto& queue : queues_)
            if (queue->isCurrent()) where = queue->label();
        recorder_.note(text + " on " + where);
    }
    Observable<int> noted(const Observable<int>& stream, const std::string& name = "") {
        return stream.doOn({.onSubscribe = [this, name] { noteWhere(name + "subscribed"); },
                            .onDispose = [this, name] { noteWhere(name + "left"); }});
    }
    Disposable subscribe(const Observable<int>& stream) {
        return stream.subscribe([this](int value) { noteWhere("next " + std::to_string(value)); },
                                [this](const auto&) { noteWhere("error"); },
                                [this] { noteWhere("completed"); }, [this] { noteWhere("disposed"); });
    }
    std::string run() {
        platform_->runUntilIdle();
        return recorder_.take();
    }

private:
    std::vector<std::shared_ptr<DispatchQueue>> queues_;
};

class ObserveOn : public Schedulers {};
class SubscribeOn : public Schedulers {};

} // namespace

TEST_F(Schedulers, RunActionsLaterAndInOrder) {
    const auto scheduler = makeScheduler();
    (void)scheduler->schedule([&] {
        (void)scheduler->schedule(recorder_.noting("3"));
        recorder_.note("1");
    });
    (void)scheduler->schedule(recorder_.noting("2"));
    EXPECT_EQ(recorder_.take(), "");

    EXPECT_EQ(run(), "1, 2, 3");
}

TEST_F(Schedulers, CancelOnlyByDispose) {
    auto scheduler = makeScheduler();
    (void)scheduler->schedule(recorder_.noting("dropped handle"));
    const auto cancelled = scheduler->schedule(recorder_.noting("cancelled"));
    const auto timer = scheduler->scheduleRelative(1s, recorder_.noting("cancelled timer"));
    Disposable own;
    own = scheduler->schedule([&] { own.dispose(), recorder_.note("runs on"); });
    scheduler.reset();

    cancelled.dispose();
    timer.dispose();
    platform_->advance(2s);

    EXPECT_EQ(recorder_.take(), "dropped handle, runs on");
}

TEST_F(Schedulers, RunTimersInOrderOfDeadlineAndCallNeverEarlyAndNeverInline) {
    const auto scheduler = makeScheduler();
    (void)scheduler->scheduleRelative(20ms, recorder_.noting("20 first"));
    (void)scheduler->scheduleRelative(10ms, recorder_.noting("10"));
    (void)scheduler->scheduleRelative(20ms, recorder_.noting("20 second"));
    (void)scheduler->scheduleRelative(-1s, recorder_.noting("overdue"));
    EXPECT_EQ(recorder_.take(), "");

    EXPECT_EQ(run(), "overdue");
    platform_->advance(20ms - 1ns);
    EXPECT_EQ(recorder_.take(), "10");
    platform_->advance(1ns);
    EXPECT_EQ(recorder_.take(), "20 first, 20 second");
}

TEST_F(Schedulers, OfOneNameHaveQueuesOfTheirOwn) {
    const SerialDispatchQueueScheduler first(QualityOfService::background), second(QualityOfService::utility);
    const SerialDispatchQueueScheduler third(QualityOfService::utility, "own", 5ms);

    const std::string name = "rx.global_dispatch_queue.serial";
    EXPECT_EQ(platform_->queues(), (std::vector<QueueDescription>{{name, QualityOfService::background},
                                                                  {name, QualityOfService::utility},
                                                                  {"own", QualityOfService::utility}}));
    EXPECT_EQ(third.leeway(), 5ms);
}

TEST_F(Schedulers, MayLoseTheirOwnerInItsOwnItem) {
    struct Owner {
        std::shared_ptr<Scheduler> scheduler = makeScheduler();
        PublishSubject<int> subject;
        DisposeBag bag;
    };
    auto owner = std::make_shared<Owner>();
    const std::weak_ptr<Owner> weak = owner;
    const auto stream = noted(owner->subject).observeOn(owner->scheduler);
    owner->bag.insert(stream.subscribe([&, weak](int) {
        const auto self = weak.lock();
        owner.reset();
        recorder_.note("last");
    }));

    owner->subject.onNext(1);
    owner->subject.onNext(2);

    EXPECT_EQ(run(), "subscribed on main, last, left on main");
    EXPECT_TRUE(weak.expired());
}

TEST_F(Schedulers, OfTheMainQueueRunInlineOnlyWhenIdle) {
    const auto main = MainScheduler::instance();
    const auto post = [&](const std::string& text) {
        main->post([&, text] {
            if (text == "1") main->post(recorder_.noting("nested"));
            recorder_.note(text);
        });
    };
    post("1");
    post("2");
    EXPECT_EQ(recorder_.take(), "1");
    EXPECT_EQ(run(), "nested, 2");

    makeScheduler()->post([&] { post("3"), recorder_.note("on another queue"); });
    EXPECT_EQ(run(), "on another queue, 3");

    MainScheduler::asyncInstance()->post(recorder_.noting("4"));
    (void)main->scheduleRelative(0s, recorder_.noting("5"));
    EXPECT_EQ(recorder_.take(), "");
    EXPECT_EQ(run(), "4, 5");
}

TEST_F(ObserveOn, KeepsTerminalsBehindTheElements) {
    const struct {
        Observable<int> source;
        std::string expected;
    } cases[] = {
        {just(1), "next 1 on s, completed on s, disposed on s"},
        {error<int>(failure("boom")), "error on s, disposed on s"},
        {just(1).map([](int value) { return value; }), "next 1 on s, completed on s, disposed on s"},
        {ReplaySubject<int>::create(1).take(0), "completed on s, disposed on s"},
    };
    for (const auto& [source, expected] : cases) {
        subscribe(source.observeOn(named("s")));
        EXPECT_EQ(recorder_.take(), "");
        EXPECT_EQ(run(), expected);
    }

    PublishSubject<int> subject;
    subscribe(noted(subject).observeOn(named("s")));
    subject.onNext(1), subject.onNext(2), subject.onError(failure("boom"));
    EXPECT_EQ(recorder_.take(), "subscribed on main, left on main"); // what stands above has ended
    EXPECT_EQ(run(), "next 1 on s, next 2 on s, error on s, disposed on s");
}

TEST_F(ObserveOn, DeliversWhatIsEmittedMeanwhileInALaterItem) {
    PublishSubject<int> subject;
    const auto scheduler = named("s");
    subscribe(subject.observeOn(scheduler).doOn({.onNext = [&](int value) {
        if (value != 1) return;
        subject.onNext(3);
        scheduler->post([this] { recorder_.note("posted after it"); });
    }}));
    subject.onNext(1);
    scheduler->post([this] { recorder_.note("posted before"); });
    subject.onNext(2);

    EXPECT_EQ(run(), "next 1 on s, next 2 on s, posted before, next 3 on s, posted after it");
}

TEST_F(ObserveOn, DropsTheRestWhenDisposedAndLeavesAtOnce) {
    PublishSubject<int> subject;
    Disposable handle;
    handle = subscribe(noted(subject).observeOn(named("s")).doOn({.onNext = [&](int value) {
        if (value == 2) handle.dispose();
    }}));
    subject.onNext(1), subject.onNext(2), subject.onNext(3), subject.onCompleted();
    recorder_.take();
    EXPECT_EQ(run(), "next 1 on s, disposed on s");

    handle = subscribe(noted(PublishSubject<int>()).observeOn(named("s")));
    handle.dispose();
    EXPECT_EQ(run(), "subscribed on main, left on main, disposed on main");
}

TEST_F(ObserveOn, PassesAnEndBelowToWhatStandsAbove) {
    PublishSubject<int> subject;
    subscribe(noted(subject, "upper ").observeOn(named("s")).take(1).observeOn(named("t")));
    subject.onNext(1), subject.onNext(2);

    EXPECT_EQ(run(), "upper subscribed on main, upper left on s, next 1 on t, completed on t, disposed on t");
    EXPECT_FALSE(subject.hasObservers());
}

TEST_F(ObserveOn, DeliversInlineOnAnIdleMainQueue) {
    PublishSubject<int> subject;
    recorder_.subscribe<int>(subject.observeOn(MainScheduler::instance()), "", [&](int value) {
        if (value == 1) subject.onNext(2), recorder_.note("handled 1");
    });
    subject.onNext(1);
    EXPECT_EQ(recorder_.take(), "next 1, handled 1");
    subject.onNext(3);
    EXPECT_EQ(run(), "next 2, next 3");
}

TEST_F(SubscribeOn, SubscribesOnItsSchedulerAndLeavesThereInAnItemOfItsOwn) {
    PublishSubject<int> subject;
    const auto scheduler = named("s");
    auto handle = subscribe(noted(noted(subject, "upper ").subscribeOn(scheduler), "lower "));
    EXPECT_EQ(recorder_.take(), "lower subscribed on main");
    EXPECT_EQ(run(), "upper subscribed on s");

    subject.onNext(1);
    scheduler->post([&] { handle.dispose(), subject.onNext(2); });
    scheduler->post([&] { recorder_.note("queued before"); });
    EXPECT_EQ(run(), "next 1 on main, lower left on s, disposed on s, queued before, upper left on s");
    EXPECT_FALSE(subject.hasObservers());
}

TEST_F(SubscribeOn, LeavesLaterAlsoAfterATerminal) {
    PublishSubject<int> subject;
    subscribe(noted(subject).subscribeOn(named("s")).take(1));
    run();

    subject.onNext(1);
    subject.onNext(2);
    EXPECT_EQ(recorder_.take(), "next 1 on main, completed on main, disposed on main");
    EXPECT_TRUE(subject.hasObservers());

    EXPECT_EQ(run(), "left on s");
    EXPECT_FALSE(subject.hasObservers());

    subscribe(just(1).subscribeOn(named("t")));
    EXPECT_EQ(run(), "next 1 on t, completed on t, disposed on t");
}

TEST_F(SubscribeOn, NeverSubscribesOnceDisposed) {
    const auto handle = subscribe(noted(just(1)).subscribeOn(named("s")));

    handle.dispose();

    EXPECT_EQ(run(), "disposed on main");
}

TEST_F(SubscribeOn, WorksWithObserveOnAndOnceItsSourceIsGone) {
    auto subject = std::make_unique<ReplaySubject<int>>(ReplaySubject<int>::create(1));
    subject->onNext(1);
    const auto handle =
        subscribe(noted(*subject, "upper ").observeOn(named("one")).subscribeOn(named("two")));
    EXPECT_EQ(run(), "upper subscribed on two, next 1 on one");

    subject.reset();
    handle.dispose();
    EXPECT_EQ(run(), "disposed on main, upper left on two");
}

} // namespace corvantile::rx
