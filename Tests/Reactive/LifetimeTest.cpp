#include "Reactive/CombineLatest.hpp"
#include "Tests/Reactive/PlatformTest.hpp"

#include <functional>
#include <optional>
#include <string>

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
using Stream = Observable<Live>;

struct Operator {
    std::string name;
    std::function<Stream(const Stream&)> apply;
    bool isShared = false; // it may not hear of the source's end
};

class Lifetimes : public PlatformTest {
protected:
    // Every operator, alone and between two others.
    void forEach(const std::function<void(const Operator&)>& body) {
        const auto scheduler = makeScheduler();
        const auto nothing = [live = Live()] {};
        const auto yes = [live = Live()](const Live&) { return true; };
        const auto no = [live = Live()](const Live&) { return false; };
        const auto same = [live = Live()](const Live& value, const auto&...) { return value; };
        const Operator operators[] = {
            {"none", [](const Stream& s) { return s; }},
            {"map", [=](const Stream& s) { return s.map(same); }},
            {"filter", [=](const Stream& s) { return s.filter(yes); }},
            {"skipWhile", [=](const Stream& s) { return s.skipWhile(no); }},
            {"take", [](const Stream& s) { return s.take(2); }},
            {"distinctUntilChanged", [](const Stream& s) { return s.distinctUntilChanged(); }},
            {"doOn", [=](const Stream& s) { return s.doOn({.onNext = yes, .onDispose = nothing}); }},
            {"debug", [](const Stream& s) { return s.debug("id"); }},
            {"observeOn", [=](const Stream& s) { return s.observeOn(scheduler); }},
            {"subscribeOn", [=](const Stream& s) { return s.subscribeOn(scheduler); }},
            {"combineLatest", [=](const Stream& s) { return combineLatest(s, s, same); }},
            {"combineLatest of two", [=](const Stream& s) { return combineLatest(s, just(Live()), same); }},
            {"connected",
             [](const Stream& s) {
                 const auto shared = s.replayAll();
                 (void)shared.connect();
                 return shared.asObservable();
             },
             true},
            {"not connected", [](const Stream& s) { return s.replayAll().asObservable(); }, true},
        };
        for (const auto& [name, apply, isShared] : operators) {
            const auto between = [&apply = apply, same](const Stream& s) {
                return apply(s.map(same)).debug("id");
            };
            for (const auto& tested :
                 {Operator{name, apply, isShared}, {name + " between", between, isShared}}) {
                SCOPED_TRACE(tested.name);
                body(tested);
            }
        }
    }

    static Disposable subscribe(const Stream& stream) {
        const auto handler = [live = Live()](const auto&...) {};
        return stream.subscribe(handler, handler, handler, handler);
    }
};

} // namespace

TEST_F(Lifetimes, ReturnToZeroHoweverASubscriptionEnds) {
    using Subject = std::optional<ReplaySubject<Live>>;
    using Handle = std::optional<Disposable>;
    const std::pair<const char*, void (*)(Subject&, Handle&)> ends[] = {
        {"completed", [](Subject& subject, Handle&) { subject->onCompleted(); }},
        {"failed", [](Subject& subject, Handle&) { subject->onError(failure("no")); }},
        {"disposed", [](Subject&, Handle& handle) { handle->dispose(); }},
        {"disposed without source",
         [](Subject& subject, Handle& handle) { subject.reset(), handle->dispose(); }},
        {"abandoned", [](Subject&, Handle& handle) { handle.reset(); }},
        {"abandoned by its source first",
         [](Subject& subject, Handle& handle) { subject.reset(), handle.reset(); }},
        {"subject disposed", [](Subject& subject, Handle& handle) { subject->dispose(), handle.reset(); }},
    };
    forEach([&](const Operator& tested) {
        for (const auto& [name, end] : ends) {
            SCOPED_TRACE(name);
            const int before = Live::count;
            Subject subject = ReplaySubject<Live>::create(1);
            subject->onNext(Live());
            Handle handle = subscribe(tested.apply(*subject));
            platform_->runUntilIdle();
            subject->onNext(Live());

            end(subject, handle);
            subject.reset();
            platform_->runUntilIdle();
            if (tested.isShared) handle.reset();    // any other is over, and its handle keeps nothing
            tested.apply(just(Live())).subscribe(); // ends inside its subscription
            platform_->runUntilIdle();

            EXPECT_EQ(Live::count, before);
        }
    });
}

TEST_F(Lifetimes, OutlastADroppedHandleWhileTheSourceLives) {
    forEach([&](const Operator& tested) {
        PublishSubject<Live> subject;
        bool isReached = false;
        tested.apply(subject).subscribe([&](const Live&) { isReached = true; });
        platform_->runUntilIdle();
        subject.onNext(Live());
        platform_->runUntilIdle();
        EXPECT_EQ(isReached, !tested.name.starts_with("not connected"));
    });
}

} // namespace corvantile::rx
