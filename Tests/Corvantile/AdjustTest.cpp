#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AdjustPlugin.hpp"
#include "CorvantileTest/RecordingAdjust.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::AdjustTest {

class HostDelegate final : public AdjustDelegate {};

class StartingAdjust : public ProcessTest {
protected:
    // The configuration that the SDK was launched with.
    std::shared_ptr<ADJConfig> launch(const std::shared_ptr<AdjustPlugin>& plugin) {
        platform_->console().clear();
        EXPECT_TRUE(plugin->didFinishLaunchingWithOptions(*UIApplication::shared(), {}));
        return adjust_.callsOf<RecordingAdjust::Launched>().back().config;
    }

    RecordingAdjust& adjust_ = platform_->adjust();
    const AdjustAppSecret secret_{.id = 1, .info1 = 2, .info2 = 3, .info3 = 4, .info4 = 5};
};

TEST_F(StartingAdjust, ConfiguresTheSDKForItsEnvironment) {
    for (const auto& [isDebug, environment] :
         {std::pair(true, std::string("sandbox")), {false, "production"}}) {
        const auto plugin = std::make_shared<AdjustPlugin>("first", isDebug);
        plugin->setAppToken("abcdefghijkl");
        const auto config = launch(plugin);

        EXPECT_EQ(config->appToken(), "abcdefghijkl");
        EXPECT_EQ(config->environment(), environment);
        EXPECT_EQ(config->logLevel(), ADJLogLevel::verbose);
        EXPECT_TRUE(config->sendInBackground());
        EXPECT_EQ(config->appSecret(), std::nullopt);
        EXPECT_EQ(config->delegate().lock(), plugin);
        EXPECT_THAT(lines(), ElementsAre(environment + " " + environment +
                                             " --- Adjust Environment  sandbox production",
                                         "Adjust --- Optional(\"" + config->description() + "\")"));
    }
}

TEST_F(StartingAdjust, GoesThroughWithARefusedConfiguration) {
    const auto plugin = std::make_shared<AdjustPlugin>("", true, secret_);
    const std::string environments = " sandbox --- Adjust Environment  sandbox production";
    adjust_.setConfigAnswer(RecordingAdjust::ConfigAnswer::none);
    EXPECT_EQ(launch(plugin), nullptr);
    EXPECT_THAT(lines(), ElementsAre(environments, "Adjust --- nil"));

    adjust_.setConfigAnswer(RecordingAdjust::ConfigAnswer::invalid);
    const auto config = launch(plugin);
    EXPECT_EQ(config->appSecret(), (ADJConfig::AppSecret{1, 2, 3, 4, 5}));
    EXPECT_THAT(lines(), ElementsAre(environments, "Adjust --- Optional(\"" + config->description() + "\")"));
}

TEST_F(StartingAdjust, GivesTheCallbacksToAHostDelegateThatIsAliveAtLaunch) {
    auto host = std::make_shared<HostDelegate>();
    const auto plugin = std::make_shared<AdjustPlugin>("abcdefghijkl", true, std::nullopt, host);
    EXPECT_EQ(launch(plugin)->delegate().lock(), host);
    host.reset();
    EXPECT_EQ(launch(plugin)->delegate().lock(), plugin);
}

TEST_F(StartingAdjust, SaysWhatTheSDKTells) {
    const auto plugin = std::make_shared<AdjustPlugin>("abcdefghijkl", true);
    launch(plugin);
    platform_->console().clear();
    adjust_.callDelegate([](AdjustDelegate& to) {
        to.adjustAttributionChanged(ADJAttribution{.network = "n", .adid = "a"});
        to.adjustEventTrackingFailed(ADJEventFailure{.eventToken = "t"});
        to.adjustEventTrackingSucceeded({});
        to.adjustSessionTrackingFailed(ADJSessionFailure{.message = "m"});
        to.adjustSessionTrackingSucceeded(ADJSessionSuccess{.message = "m"});
        to.adjustConversionValueUpdated(-7);
        EXPECT_TRUE(to.adjustDeeplinkResponse("app://offer"));
    });
    platform_->runUntilIdle();
    EXPECT_THAT(lines(),
                ElementsAre("n -  -  - a  attribution -- Adjust", "t  was failed to be sent by -- Adjust",
                            " was sent successfully -- Adjust", "m sessionFailureResponseData -- Adjust",
                            "m sessionSuccessResponseData -- Adjust",
                            "-7 conversion value updated -- Adjust"));
}

constexpr const char* fatal =
    "^Corvantile/AdjustAnalyticComponent:43: Fatal error: Fail to load event file\n$";

AdjustAnalyticComponent load(const std::string& file) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device, {.resources = {{"events.json", file}}});
    return AdjustAnalyticComponent("events", {"a", "b"});
}

TEST(EventTokenFile, IsReadInItsOrder) {
    const auto file =
        R"([{"token": "t1", "name": "store", "note": {"by": ["anyone"]}}, {"name": "", "token": ""},
        {"name": "caf\u00e9", "token": "t2", "token": "t3"}, {"token": "t4", "name": "store"}])";
    const auto component = load(file);
    EXPECT_THAT(component.events(),
                UnorderedElementsAre(Pair("store", "t4"), Pair("", ""), Pair("caf\u00e9", "t3")));
    EXPECT_THAT(component.ignoredEventNames(), ElementsAre("a", "b"));
}

TEST(EventTokenFileDeathTest, EndsTheProcessWhenItIsAnythingElse) {
    for (const std::string file :
         {"", R"({"token": "t", "name": "n"})", "[1]", R"([{"token": 1, "name": "n"}])",
          R"([{"token": "t", "name": "n"}, {"token": "t"}])", "[] []"})
        EXPECT_DEATH(load(file), fatal) << file;
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    EXPECT_DEATH(AdjustAnalyticComponent("events"), fatal);
}

class SendingToAdjust : public ProcessTest {
protected:
    static NSDecimalNumber decimal(const char* text) { return *NSDecimalNumber::fromText(text); }

    RecordingAdjust& adjust_ = platform_->adjust();
    AdjustAnalyticComponent component_{{{"store", "T"}}, {"ignored"}};
};

TEST_F(SendingToAdjust, SaysWhichEventsHaveAToken) {
    component_.track(AnalyticEvent("store", {{"level", 3}}));
    component_.track(AnalyticEvent("store"), decimal("4.99"), "USD");
    component_.track(AnalyticEvent("Store"));
    component_.track(AnalyticEvent("lost"), decimal("1"), "USD");

    EXPECT_EQ(adjust_.callsOf<ADJEvent>().size(), 2u);
    EXPECT_THAT(lines(), ElementsAre("Adjust --- tracked store - T", "Adjust --- tracked store - T",
                                     "Adjust --- not found Store", "Adjust --- not found lost"));
}

TEST_F(SendingToAdjust, ReplacesTheIgnoredNames) {
    EXPECT_FALSE(component_.shouldTrack(AnalyticEvent("ignored")));
    component_.ignore({"a", "b"});
    component_.ignore({"c"});
    EXPECT_THAT(component_.ignoredEventNames(), ElementsAre("c"));
}

TEST_F(SendingToAdjust, SendsASubscriptionIfThereIsAReceipt) {
    const auto track = [&] {
        component_.trackIAPSubs(decimal("4.90"), "USD", "1000", TestDevice::startDate, "US");
    };
    track();
    device_.setAppStoreReceipt("");
    track();
    EXPECT_THAT(lines(), IsEmpty());

    const std::string receipt("\0\xFF", 2);
    device_.setAppStoreReceipt(receipt);
    track();
    component_.trackIAPSubs(decimal("0"), "", "", std::nullopt, std::nullopt);
    adjust_.setRefusesSubscriptions(true);
    track();
    const auto sent = adjust_.callsOf<ADJSubscription>();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].receipt(), receipt);
    EXPECT_EQ(sent[0].transactionDate(), TestDevice::startDate);
    EXPECT_EQ(sent[0].salesRegion(), "US");
    EXPECT_FALSE(sent[1].transactionDate() || sent[1].salesRegion());
    EXPECT_THAT(lines(), ElementsAre("Adjust IAP track---  4.9 USD 1000 2024-01-02 03:04:05 +0000 US",
                                     "Adjust IAP track---  0    ",
                                     "Adjust IAP track---     2024-01-02 03:04:05 +0000 US"));
}

} // namespace corvantile::AdjustTest
