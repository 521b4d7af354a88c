#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "Tests/Corvantile/ProcessTest.hpp"

#include <functional>
#include <thread>

namespace corvantile {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;

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

class Router : public ProcessTest {
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

    Journal journal_;
    const NSDecimalNumber price_ = *NSDecimalNumber::fromText("4.99");
    std::shared_ptr<AnalyticPlugin> router_ = std::make_shared<AnalyticPlugin>();
};

TEST_F(Router, DeliversToEverySinkThatAcceptsAsOftenAsItIsRegisteredFirstRegisteredFirst) {
    const auto first = sink("a");
    router_->registerComponents({first, sink("b")});
    router_->registerComponents({first});
    first->ignore({"quiet"});

    EXPECT_THAT(delivered("loud"), ElementsAre("a: loud", "b: loud", "a: loud", "a: loud 4.99 USD",
                                               "b: loud 4.99 USD", "a: loud 4.99 USD"));
    EXPECT_THAT(delivered("quiet"), ElementsAre("b: quiet", "b: quiet 4.99 USD"));
    for (const auto* const name : {"Quiet", "QUIET", "quie", "quiet_", "_quiet", ""})
        EXPECT_THAT(delivered(name), SizeIs(6)) << name;
    for (int i = 0; i < 40; ++i) router_->registerComponents({first});
    EXPECT_EQ(delivered("loud").size(), 86u);
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
    router_->track(AnalyticEvent("f"));
    EXPECT_THAT(journal_, ElementsAre("a: e", "b: e", "a: f", "b: f", "late: f"));
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

    const std::string record = "subs 4.99 USD 77 2001-01-01 00:00:00 +0000 DE";
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

} // namespace
} // namespace corvantile
