#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "Tests/Corvantile/RecordingAnalytics.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

#include <thread>

namespace corvantile::AnalyticPluginTest {

class LoudConsole final : public ConsoleComponent {};

class Router : public ProcessTest {
protected:
    // Writes into the journal, under its name.
    std::shared_ptr<RecordingSink> sink(const std::string& name) {
        const auto made = std::make_shared<RecordingSink>();
        made->onLine = [this, name](const std::string& line) { journal_.push_back(name + ": " + line); };
        return made;
    }
    // Tracks the event both ways, and hands over what the sinks wrote.
    Lines delivered(const std::string& name) {
        journal_.clear();
        router_->track(AnalyticEvent(name));
        router_->track(AnalyticEvent(name), price_, "USD");
        return std::exchange(journal_, {});
    }

    Lines journal_;
    const NSDecimalNumber price_ = *NSDecimalNumber::fromText("4.99");
    std::shared_ptr<AnalyticPlugin> router_ = std::make_shared<AnalyticPlugin>();
};

TEST_F(Router, DeliversToEverySinkThatAcceptsAsOftenAsItIsRegisteredFirstRegisteredFirst) {
    const auto first = sink("a");
    router_->registerComponents({first, sink("b")});
    router_->registerComponents({first});
    first->ignore({"quiet"});

    EXPECT_THAT(delivered("loud"), ElementsAre("a: loud", "b: loud", "a: loud", "a: loud + 4.99 USD",
                                               "b: loud + 4.99 USD", "a: loud + 4.99 USD"));
    EXPECT_THAT(delivered("quiet"), ElementsAre("b: quiet", "b: quiet + 4.99 USD"));
    for (const auto* const name : {"Quiet", "QUIET", "quie", "quiet_", "_quiet", ""})
        EXPECT_THAT(delivered(name), SizeIs(6)) << name;
    for (int i = 0; i < 40; ++i) router_->registerComponents({first});
    EXPECT_EQ(delivered("loud").size(), 86u);
}

TEST_F(Router, ChoosesTheSinksBeforeItCallsTheFirst) {
    const auto first = sink("a"), second = sink("b");
    router_->registerComponents({first, second});
    first->onLine = [&](const std::string&) {
        second->ignore({"e"});
        router_->registerComponents({sink("late")});
    };

    router_->track(AnalyticEvent("e"));
    EXPECT_THAT(journal_, ElementsAre("b: e"));
}

TEST_F(Router, StaysUntilTheCallReturnsInWhichASinkReleasesIt) {
    const std::function<void(AnalyticPlugin&)> calls[] = {
        [](auto& router) { router.track(AnalyticEvent("e")); },
        [this](auto& router) { router.trackIAPSubs(price_, "USD", "0", std::nullopt, std::nullopt); }};
    for (const auto& call : calls) {
        router_ = std::make_shared<AnalyticPlugin>();
        const auto first = sink("a");
        auto second = sink("b");
        const std::weak_ptr<RecordingSink> last = second;
        router_->registerComponents({first, std::move(second)});
        first->onLine = [&](const std::string&) {
            router_.reset();
            EXPECT_FALSE(last.expired());
        };
        call(*router_);
        EXPECT_TRUE(last.expired());
    }
    EXPECT_THAT(journal_, SizeIs(2));
}

TEST_F(Router, FeedsOnlyTheFirstConsoleInADryRun) {
    const auto ignoring = std::make_shared<ConsoleComponent>();
    ignoring->ignore({"e"});
    router_->registerComponents({sink("sdk"), std::make_shared<LoudConsole>()});
    Corvantile::setDryRun(true);
    EXPECT_THAT(delivered("e"), IsEmpty());
    EXPECT_THAT(lines(), IsEmpty()) << "a derived class is not the console";

    router_->registerComponents({ignoring, std::make_shared<ConsoleComponent>()});
    EXPECT_THAT(delivered("e"), IsEmpty());
    EXPECT_THAT(lines(), SizeIs(2)) << "one for each way of tracking, though its name is ignored";
}

TEST_F(Router, ForwardsSubscriptionsPastEveryFilter) {
    router_->trackIAPSubs(price_, "USD", "0", std::nullopt, std::nullopt); // nobody there: lost
    router_->registerComponents({sink("a"), std::make_shared<ConsoleComponent>(), sink("b")});
    Corvantile::setDryRun(true);

    router_->trackIAPSubs(price_, "USD", "77", Date{}, "DE");

    const std::string record = "subscription 77 4.99 USD DE 2001-01-01";
    EXPECT_THAT(journal_, ElementsAre("a: " + record, "b: " + record));
}

TEST_F(Router, KeepsWhatCameBeforeTheSinksAndNeverDeliversIt) {
    router_->track(AnalyticEvent("early"));
    router_->track(AnalyticEvent("paid"), price_, "USD");
    router_->registerComponents({sink("a")});
    Corvantile::setDebug(true);
    router_->flush();
    platform_->runUntilIdle();
    EXPECT_THAT(journal_, IsEmpty());
    EXPECT_THAT(lines(), ElementsAre(EndsWith(": AnalyticPlugin:70 (flush()) -> subscribed")));

    router_->track(AnalyticEvent("late"));
    EXPECT_THAT(journal_, ElementsAre("a: late"));
}

TEST_F(Router, TakesASinkWhileAnotherThreadTracks) {
    router_->registerComponents({sink("a")});
    std::thread tracker([&] {
        for (int i = 0; i < 1000; ++i) router_->track(AnalyticEvent("e"));
    });
    for (int i = 0; i < 100; ++i) router_->registerComponents({std::make_shared<ConsoleComponent>()});
    tracker.join();
    EXPECT_THAT(journal_, SizeIs(1000));
}

} // namespace corvantile::AnalyticPluginTest
