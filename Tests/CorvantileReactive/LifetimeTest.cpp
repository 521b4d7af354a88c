#include "CorvantileReactive/CombineLatest.hpp"
#include "Tests/CorvantileReactive/PlatformTest.hpp"

namespace corvantile::rx::LifetimeTest {

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
    const char* name;
    std::function<Stream(const Stream&)> apply;
    bool isShared = false; // it may not hear of the source's end
};

std::vector<Operator> everyOperator(const std::shared_ptr<Scheduler>& scheduler) {
    const auto nothing = [live = Live()] {};
    const auto yes = [live = Live()](const Live&) { return true; };
    const auto no = [live = Live()](const Live&) { return false; };
    const auto same = [live = Live()](const Live& value, const auto&...) { return value; };
    return {
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
}

Disposable subscribe(const Stream& stream) {
    const auto handler = [live = Live()](const auto&...) {};
    return stream.subscribe(handler, handler, handler, handler);
}

using Lifetimes = PlatformTest;

TEST_F(Lifetimes, ReturnToZeroHoweverASubscriptionEnds) {
    using Subject = std::optional<ReplaySubject<Live>>;
    using Handle = std::optional<Disposable>;
    const auto always = [](const Live&) { return true; };
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
    const auto play = [&](const Operator& tested, bool isStaged, const auto& end) {
        const auto before = Live::count;
        Subject subject = ReplaySubject<Live>::create(1);
        subject->onNext(Live());
        Handle handle =
            subscribe(isStaged ? tested.apply(subject->filter(always)).debug("id") : tested.apply(*subject));
        platform_->runUntilIdle();
        subject->onNext(Live());

        end(subject, handle);
        subject.reset();
        platform_->runUntilIdle();
        if (tested.isShared) handle.reset();    // any other is over, and its handle keeps nothing
        tested.apply(just(Live())).subscribe(); // ends inside its subscription
        platform_->runUntilIdle();
        EXPECT_EQ(Live::count, before);
    };
    for (const auto& tested : everyOperator(makeScheduler()))
        for (const auto& [name, end] : ends)
            for (const bool isStaged : {false, true}) {
                SCOPED_TRACE(std::string(tested.name) + ", " + name + (isStaged ? ", between others" : ""));
                play(tested, isStaged, end);
            }
}

} // namespace corvantile::rx::LifetimeTest
