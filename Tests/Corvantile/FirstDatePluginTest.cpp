#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"

#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::FirstDatePluginTest {

using namespace std::chrono_literals;

constexpr const char* service = "com.example.app";
constexpr Date noon = Date::fromUnixSeconds(1704196800.25); // 2024-01-02 12:00:00.250 UTC

class FirstDate : public ProcessTest {
protected:
    void SetUp() override {
        analytics_->registerComponents({std::make_shared<ConsoleComponent>()});
        UIApplication::shared()->setDelegate(std::make_shared<PluggableApplicationDelegate>(
            PluggableApplicationDelegate::Plugins{analytics_, plugin_}));
        plugin_->firstDate().subscribe([this](Date date) { published_.push_back(describe(date)); });
        device_.setNow(noon);
    }
    void activate() { plugin_->didBecomeActive(*UIApplication::shared()); }
    void keep(const KeychainDictionary& entry) { device_.keychain().update(entry, "firstDate", service); }

    std::shared_ptr<AnalyticPlugin> analytics_ = std::make_shared<AnalyticPlugin>();
    std::shared_ptr<FirstDatePlugin> plugin_ = std::make_shared<FirstDatePlugin>();
    std::vector<std::string> published_;
    const std::string midnight_ = "2024-01-02 00:00:00 +0000";
};

TEST_F(FirstDate, IsRecordedOnceAndPublishedAtEveryActivation) {
    activate();
    device_.pass(72h);
    activate();

    EXPECT_THAT(published_, ElementsAre(midnight_, midnight_));
    EXPECT_THAT(lines(), ElementsAre("\"First time install had been recorded at: 2024-01-02T00:00:00.000Z\"",
                                     "\"First time install had been loaded (2024-01-02T00:00:00.000Z).\""));
    const auto entries = device_.keychain().entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].dictionary, (KeychainDictionary{{"firstDate", Date::fromUnixSeconds(1704153600)}}));
}

TEST_F(FirstDate, IsMidnightOfTheDayInUTCWhateverTheZone) {
    device_.setTimeZoneOffset(14h);
    const std::pair<double, std::string> cases[] = {
        {1704153599, "2024-01-01"}, {1704153600, "2024-01-02"}, {-1, "1969-12-31"}};
    for (const auto& [now, day] : cases) {
        device_.keychain().removeAll();
        device_.setNow(Date::fromUnixSeconds(now));
        activate();
        EXPECT_EQ(published_.back(), day + " 00:00:00 +0000");
    }
}

TEST_F(FirstDate, IsPublishedAsItIsStoredUnlessTheEntryIsNotOurs) {
    const std::pair<KeychainDictionary, std::string> cases[] = {
        {{{"firstDate", noon}, {"another", Date{0}}}, "2024-01-02 12:00:00 +0000"},
        {{{"other", Date{0}}}, midnight_},
        {{{"firstDate", "text"}}, midnight_},
        {{{"firstDate", noon}, {"more", 1}}, midnight_},
    };
    for (const auto& [entry, published] : cases) {
        keep(entry);
        activate();
        EXPECT_EQ(published_.back(), published);
    }
    device_.keychain().makeUnreadable("firstDate", service);
    activate();
    EXPECT_EQ(published_.back(), midnight_);
    EXPECT_TRUE(device_.keychain().entries()[0].isReadable);
}

TEST_F(FirstDate, IsNotLostWhenTheKeychainOpensBetweenLoadAndSave) {
    keep({{"firstDate", Date::fromUnixSeconds(0)}});
    device_.keychain().lockForNextLoad();
    activate();
    EXPECT_THAT(published_, ElementsAre("1970-01-01 00:00:00 +0000"));
    EXPECT_EQ(device_.keychain().entries()[0].dictionary,
              (KeychainDictionary{{"firstDate", Date::fromUnixSeconds(0)}}));
}

TEST_F(FirstDate, ReportsARefusalAsAnEventAndPublishesNothing) {
    device_.keychain().denyNextSave(KeychainStatus::diskFull);
    activate();
    EXPECT_THAT(published_, IsEmpty());
    EXPECT_THAT(lines(),
                ElementsAre(StartsWith("Error Domain=NSOSStatusErrorDomain Code=-34 \""),
                            AllOf(HasSubstr("locksmith_create_firstdate"), HasSubstr("\\\"error\\\" : "))));

    keep({});
    device_.keychain().denyNextUpdate();
    activate();
    EXPECT_THAT(published_, IsEmpty());

    activate();
    EXPECT_THAT(published_, ElementsAre(midnight_));
}

} // namespace corvantile::FirstDatePluginTest
