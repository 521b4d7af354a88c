#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "TestPlatform/RecordingConsole.hpp"
#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace corvantile {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

using Journal = std::vector<std::string>;

// Notes what reaches it.
class NotingSink final : public AnalyticComponent {
public:
    NotingSink(Journal& journal, std::string name) : journal_(journal), name_(std::move(name)) {}

    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override { return ignored_; }
    void ignore(std::initializer_list<std::string_view> names) override {
        ignored_.insert(ignored_.end(), names.begin(), names.end());
    }

    void track(const AnalyticEvent& event) override { note(event.name); }
    void track(const AnalyticEvent& event, const NSDecimalNumber& with,
               const std::string& currency) override {
        note(event.name + " " + with.description() + " " + currency);
    }
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::optional<Date>& date, const std::optional<std::string>& region) override {
        note("subs " + price.description() + " " + currency + " " + transId + " " +
             (date ? describe(*date) : "no date") + " " + region.value_or("no region"));
    }

    // Runs at each delivery.
    std::function<void()> onTrack = [] {};

private:
    void note(const std::string& what) {
        journal_.push_back(name_ + ": " + what);
        onTrack();
    }

    Journal& journal_;
    const std::string name_;
    std::vector<std::string> ignored_;
};

class LoudConsole final : public ConsoleComponent {};

class Router : public testing::Test {
protected:
    std::shared_ptr<NotingSink> sink(std::string name) {
        return std::make_shared<NotingSink>(journal_, std::move(name));
    }
    // Tracks the event both ways, and hands over what the sinks wrote.
    Journal delivered(const std::string& name) {
        journal_.clear();
        router_->track(AnalyticEvent(name));
        router_->track(AnalyticEvent(name), price_, "USD");
        return std::exchange(journal_, {});
    }
    std::size_t linesPrinted() { return platform_->console().lines().size(); }

    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_ = TestPlatform::launch(device_);
    Journal journal_;
    const NSDecimalNumber price_ = *NSDecimalNumber::fromText("4.99");
    std::shared_ptr<AnalyticPlugin> router_ = std::make_shared<AnalyticPlugin>();
};

TEST_F(Router, DeliversToEverySinkThatAcceptsFirstRegisteredFirst) {
    const auto first = sink("a");
    router_->registerComponents({first, sink("b")});
    router_->registerComponents({sink("c")});
    first->ignore({"quiet"});

    EXPECT_THAT(delivered("loud"), ElementsAre("a: loud", "b: loud", "c: loud", "a: loud 4.99 USD",
                                               "b: loud 4.99 USD", "c: loud 4.99 USD"));
    EXPECT_THAT(delivered("quiet"),
                ElementsAre("b: quiet", "c: quiet", "b: quiet 4.99 USD", "c: quiet 4.99 USD"));
}

TEST_F(Router, DeliversTwiceToASinkRegisteredTwiceAndToManyMore) {
    const auto twice = sink("a");
    router_->registerComponents({twice, twice});
    EXPECT_THAT(delivered("e"), ElementsAre("a: e", "a: e", "a: e 4.99 USD", "a: e 4.99 USD"));
    for (int i = 0; i < 40; ++i) router_->registerComponents({twice});
    EXPECT_EQ(delivered("e").size(), 84u);
}

TEST_F(Router, ChoosesTheSinksBeforeItCallsTheFirst) {
    const auto first = sink("a");
    const auto second = sink("b");
    router_->registerComponents({first, second});
    first->onTrack = [&] {
        second->ignore({"e"});
        router_->registerComponents({sink("late")});
    };

    router_->track(AnalyticEvent("e"));
    EXPECT_THAT(journal_, ElementsAre("a: e", "b: e"));
    first->onTrack = [] {};
    journal_.clear();
    router_->track(AnalyticEvent("e"));
    EXPECT_THAT(journal_, ElementsAre("a: e", "late: e"));
}

TEST_F(Router, FeedsOnlyTheFirstConsoleInADryRun) {
    const auto ignoring = std::make_shared<ConsoleComponent>();
    ignoring->ignore({"e"});
    router_->registerComponents({sink("sdk"), std::make_shared<LoudConsole>()});
    Corvantile::setDryRun(true);
    EXPECT_THAT(delivered("e"), IsEmpty());
    EXPECT_EQ(linesPrinted(), 0u) << "a derived class is not the console";

    router_->registerComponents({ignoring, std::make_shared<ConsoleComponent>()});
    EXPECT_THAT(delivered("e"), IsEmpty());
    EXPECT_EQ(linesPrinted(), 2u) << "one for each way of tracking, though its name is ignored";

    Corvantile::setDryRun(false);
    EXPECT_THAT(delivered("e"), ElementsAre("sdk: e", "sdk: e 4.99 USD"));
    EXPECT_EQ(linesPrinted(), 2u + 4u) << "the derived console, and the one that ignores nothing";
}

TEST_F(Router, ForwardsSubscriptionsPastEveryFilter) {
    const auto console = std::make_shared<ConsoleComponent>();
    router_->trackIAPSubs(price_, "USD", "0", std::nullopt, std::nullopt); // nobody there: lost
    router_->registerComponents({sink("a"), console, sink("b")});
    Corvantile::setDryRun(true);

    router_->trackIAPSubs(price_, "USD", "77", Date{}, "DE");
    router_->trackIAPSubs(price_, "USD", "78", std::nullopt, std::nullopt);

    EXPECT_THAT(journal_, ElementsAre("a: subs 4.99 USD 77 2001-01-01 00:00:00 +0000 DE",
                                      "b: subs 4.99 USD 77 2001-01-01 00:00:00 +0000 DE",
                                      "a: subs 4.99 USD 78 no date no region",
                                      "b: subs 4.99 USD 78 no date no region"));
}

TEST_F(Router, KeepsWhatCameBeforeTheSinksAndNeverDeliversIt) {
    router_->track(AnalyticEvent("early"));
    router_->track(AnalyticEvent("paid"), price_, "USD");
    router_->registerComponents({sink("a")});
    router_->flush();
    platform_->runUntilIdle();
    EXPECT_THAT(journal_, IsEmpty());

    router_->track(AnalyticEvent("late"));
    EXPECT_THAT(journal_, ElementsAre("a: late"));
}

TEST(EventBuffer, IsMadeOnceKeepsEverythingAndStaysAwayOnceDiscarded) {
    EventBuffer buffer;
    for (int i = 0; i < 3; ++i) buffer.subject()->onNext(AnalyticEvent(std::to_string(i)));
    Journal kept;
    buffer.subject()->subscribe([&](const AnalyticEvent& event) { kept.push_back(event.name); });
    EXPECT_THAT(kept, ElementsAre("0", "1", "2"));

    buffer.discard();
    EXPECT_FALSE(buffer.subject());
    EXPECT_FALSE(buffer.subject());
}

TEST_F(Router, FlushesOnQueuesOfItsOwnAndDisposesOfTheLastFlushOnly) {
    const QueueDescription queue{"rx.global_dispatch_queue.serial", QualityOfService::background};
    Corvantile::setDebug(true);
    router_->track(AnalyticEvent("early"));
    router_->flush();
    platform_->runUntilIdle();
    router_->flush();
    platform_->runUntilIdle();
    router_.reset();
    platform_->runUntilIdle();

    EXPECT_THAT(platform_->queues(), ElementsAre(queue, queue, queue, queue));
    EXPECT_THAT(platform_->console().lines(),
                ElementsAre(EndsWith(": AnalyticPlugin:70 (flush()) -> subscribed"),
                            EndsWith(": AnalyticPlugin:70 (flush()) -> subscribed"),
                            EndsWith(": AnalyticPlugin:70 (flush()) -> isDisposed")));
}

TEST_F(Router, TakesASinkWhileAnotherThreadTracks) {
    std::atomic<int> delivered{0};
    const auto counting = sink("a");
    counting->onTrack = [&] {
        journal_.clear();
        ++delivered;
    };
    router_->registerComponents({counting});
    std::atomic<bool> stop{false};
    std::thread tracker([&] {
        while (!stop) router_->track(AnalyticEvent("e"));
    });

    while (delivered == 0) std::this_thread::yield();
    for (int i = 0; i < 100; ++i) router_->registerComponents({std::make_shared<ConsoleComponent>()});
    stop = true;
    tracker.join();
    EXPECT_GT(delivered, 0);
}

using RouterDeathTest = Router;

TEST_F(RouterDeathTest, RefusesANullSink) {
    EXPECT_DEATH(router_->registerComponents({sink("a"), nullptr}),
                 "Fatal error: The router was given a null");
}

} // namespace
} // namespace corvantile
