#include "Reactive/CombineLatest.hpp"
#include "Reactive/ConnectableObservable.hpp"
#include "Reactive/Factories.hpp"
#include "Reactive/PublishSubject.hpp"
#include "Reactive/ReplaySubject.hpp"
#include "Tests/Reactive/PlatformTest.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile::rx {

namespace {

// Counts itself: as an element, and in whatever captures one.
struct Live {
    Live() { ++count; }
    Live(const Live&) { ++count; }
    Live& operator=(const Live&) = default;
    ~Live() { --count; }
    friend bool operator==(const Live&, const Live&) { return false; }
    static inline int count = 0;
};

struct Operator {
    std::string name;
    std::function<Observable<Live>(const Observable<Live>&)> apply;
    bool isShared = false; // the source's end may come too early, or not at all
};

// Every operator, alone and between others.
class Lifetimes : public PlatformTest {
protected:
    void forEach(const std::function<void(const Operator&)>& body) {
        using Stream = Observable<Live>;
        const auto scheduler = makeScheduler();
        const auto nothing = [live = Live()] {};
        const auto pass = [live = Live()](const Live&) { return true; };
        const auto same = [live = Live()](const Live& value) { return value; };
        const auto first = [live = Live()](const Live& a, const Live&) { return a; };
        const std::vector<Operator> operators = {
            {"none", [](const Stream& s) { return s; }},
            {"map", [=](const Stream& s) { return s.map(same); }},
            {"filter", [=](const Stream& s) { return s.filter(pass); }},
            {"skipWhile", [=](const Stream& s) { return s.skipWhile([pass](auto& v) { return !pass(v); }); }},
            {"take", [](const Stream& s) { return s.take(2); }},
            {"distinctUntilChanged", [](const Stream& s) { return s.distinctUntilChanged(); }},
            {"doOn", [=](const Stream& s) { return s.doOn({.onNext = pass, .onDispose = nothing}); }},
            {"debug", [](const Stream& s) { return s.debug("id"); }},
            {"observeOn", [=](const Stream& s) { return s.observeOn(scheduler); }},
            {"subscribeOn", [=](const Stream& s) { return s.subscribeOn(scheduler); }},
            {"combineLatest", [=](const Stream& s) { return combineLatest(s, s, first); }},
            {"combineLatest of two", [=](const Stream& s) { return combineLatest(s, just(Live()), first); }},
            {"replayAll",
             [](const Stream& s) {
                 const auto shared = s.replayAll();
                 (void)shared.connect();
                 return shared.asObservable();
             },
             true},
            {"not connected", [](const Stream& s) { return s.replayAll().asObservable(); }, true},
        };
        for (const auto& inner : operators) {
            body(inner);
            body({"map, " + inner.name + ", debug",
                  [&](const Stream& s) { return inner.apply(s.map(same)).debug("id"); }, inner.isShared});
        }
    }

    static Disposable subscribe(const Observable<Live>& stream) {
        const auto next = [live = Live()](const Live&) {};
        const auto end = [live = Live()] {};
        return stream.subscribe(
            next, [live = Live()](const std::exception_ptr&) {}, end, end);
    }
};

} // namespace

TEST_F(Lifetimes, ReturnToZeroHoweverASubscriptionEnds) {
    using Subject = ReplaySubject<Live>;
    const struct {
        const char* name;
        std::function<void(std::optional<Subject>&, std::optional<Disposable>&)> end;
    } ends[] = {
        {"completed", [](auto& subject, auto&) { subject->onCompleted(); }},
        {"failed", [](auto& subject, auto&) { subject->onError(failure("boom")); }},
        {"disposed", [](auto&, auto& handle) { handle->dispose(); }},
        {"disposed without its source",
         [](auto& subject, auto& handle) { subject.reset(), handle->dispose(); }},
        {"abandoned", [](auto& subject, auto& handle) { handle.reset(), subject.reset(); }},
        {"abandoned, source first", [](auto& subject, auto& handle) { subject.reset(), handle.reset(); }},
        {"subject disposed", [](auto& subject, auto& handle) { subject->dispose(), handle.reset(); }},
    };
    forEach([&](const Operator& tested) {
        for (const auto& [name, end] : ends) {
            SCOPED_TRACE(tested.name + ", " + name);
            const int before = Live::count;
            std::optional subject = Subject::create(1);
            subject->onNext(Live());
            std::optional handle = subscribe(tested.apply(*subject));
            platform_->runUntilIdle();
            subject->onNext(Live());
            platform_->runUntilIdle();

            end(subject, handle);
            platform_->runUntilIdle();
            subject.reset();
            // The handle of a subscription that is over keeps nothing of it.
            if (tested.isShared) handle.reset();
            EXPECT_EQ(Live::count, before);
        }
    });
}

TEST_F(Lifetimes, ReturnToZeroWhenTheSourceEndsInsideSubscribe) {
    forEach([&](const Operator& tested) {
        SCOPED_TRACE(tested.name);
        const int before = Live::count;
        std::optional handle = subscribe(tested.apply(just(Live())));
        platform_->runUntilIdle();
        if (tested.isShared) handle.reset();
        EXPECT_EQ(Live::count, before);
    });
}

TEST_F(Lifetimes, OfSubscriptionsOutlastTheirHandlesWhileTheSourceLives) {
    forEach([&](const Operator& tested) {
        if (tested.name.find("not connected") != std::string::npos) return;
        SCOPED_TRACE(tested.name);
        PublishSubject<Live> subject;
        int received = 0;
        tested.apply(subject).subscribe([&](const Live&) { ++received; });
        platform_->runUntilIdle();

        subject.onNext(Live());
        platform_->runUntilIdle();

        EXPECT_GE(received, 1);
    });
}

TEST_F(Lifetimes, OfAProducersSubscriptionEndWithItsObserver) {
    const int before = Live::count;
    std::optional<AnyObserver<Live>> producer;
    subscribe(create<Live>([&](const AnyObserver<Live>& observer) {
        producer = observer;
        return Disposable();
    }));
    EXPECT_GT(Live::count, before);

    producer.reset();

    EXPECT_EQ(Live::count, before);
}

} // namespace corvantile::rx
