#include "HostCore/ActivityIndicator.hpp"

#include "CorvantileReactive/Factories.hpp"
#include "CorvantileReactive/PublishSubject.hpp"
#include "Tests/CorvantilePlatform/AtOnce.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

#include <stdexcept>

namespace corvantile::ActivityIndicatorTest {

class Activity : public ProcessTest {
protected:
    Activity() {
        indicator_.asObservable().subscribe([this](bool isActive) { seen_.push_back(isActive); });
    }

    rx::Disposable start() { return indicator_.trackActivity(source_.asObservable()).subscribe(); }
    // What the indicator told up to the end of this turn of the main queue.
    std::vector<bool> turn() {
        platform_->runUntilIdle();
        return std::exchange(seen_, {});
    }

    ActivityIndicator indicator_;
    rx::PublishSubject<int> source_;
    std::vector<bool> seen_;
};

TEST_F(Activity, IsTrueFromTheFirstSubscriptionToTheLastEndAsEachTurnFindsIt) {
    const auto tracked = indicator_.trackActivity(source_.asObservable());
    EXPECT_THAT(turn(), ElementsAre(false));

    const auto one = tracked.subscribe();
    EXPECT_THAT(seen_, IsEmpty()) << "told by the main queue alone";
    EXPECT_THAT(turn(), ElementsAre(true));
    const auto two = tracked.subscribe();
    one.dispose();
    one.dispose();
    EXPECT_THAT(turn(), IsEmpty());
    two.dispose();
    const auto three = tracked.subscribe();
    EXPECT_THAT(turn(), IsEmpty()) << "stopped and started within one turn";
    source_.onError(std::make_exception_ptr(std::runtime_error("x")));
    three.dispose();
    EXPECT_THAT(turn(), ElementsAre(false));
    indicator_.trackActivity(rx::just(1)).subscribe();
    start();
    EXPECT_THAT(turn(), IsEmpty()) << "ended inside its subscription, both of them";
}

TEST_F(Activity, TellsEverySubscriberTheStateOfTheMomentWhichIsTrueInsideTheLastHandlers) {
    std::vector<std::string> trace;
    const auto note = [&](std::string where) {
        return [&, where] {
            indicator_.asObservable()
                .subscribe([&](bool now) { trace.push_back(where + (now ? " true" : " false")); })
                .dispose();
        };
    };
    rx::PublishSubject<int> other;
    indicator_.trackActivity(source_.asObservable()).subscribe({}, {}, note("completed"), note("disposed"));
    source_.onCompleted();
    note("after")();
    platform_.reset(); // counted without harm when the process has ended
    // At a dispose the count goes down before the handler runs.
    indicator_.trackActivity(other.asObservable()).subscribe({}, {}, {}, note("left")).dispose();

    EXPECT_THAT(trace, ElementsAre("completed true", "disposed true", "after false", "left false"));
}

TEST_F(Activity, CountsOnAnyThreadAndTellsOnMain) {
    turn();
    std::vector<bool> onMain;
    indicator_.asObservable().subscribe([&](bool) { onMain.push_back(DispatchQueue::main()->isCurrent()); });
    atOnce(4, [this](int) {
        for (int n = 0; n < 100; ++n) start().dispose();
        start();
    });

    EXPECT_THAT(seen_, IsEmpty());
    EXPECT_THAT(turn(), ElementsAre(true));
    EXPECT_THAT(onMain, ElementsAre(true, true));
    source_.onCompleted();
    EXPECT_THAT(turn(), ElementsAre(false));
}

} // namespace corvantile::ActivityIndicatorTest
