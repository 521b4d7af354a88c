#include "Corvantile/Plugin/Analytic/AdjustPlugin.hpp"

#include "Platform/Application/UIApplication.hpp"
#include "TestPlatform/RecordingAdjust.hpp"
#include "TestPlatform/RecordingConsole.hpp"
#include "Tests/Corvantile/ProcessTest.hpp"

#include <gmock/gmock.h>

namespace corvantile {
namespace {

using testing::ElementsAre;

class HostDelegate final : public AdjustDelegate {};

class StartingAdjust : public ProcessTest {
protected:
    // The configuration that the SDK was launched with.
    std::shared_ptr<ADJConfig> launch(const std::shared_ptr<AdjustPlugin>& plugin) {
        platform_->console().clear();
        EXPECT_TRUE(plugin->didFinishLaunchingWithOptions(*UIApplication::shared(), {}));
        return adjust_.callsOf<RecordingAdjust::Launched>().back().config;
    }
    std::vector<std::string> lines() { return platform_->console().lines(); }

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

TEST_F(StartingAdjust, HandsThePushTokenOverAndSaysWhatTheSDKTells) {
    const auto plugin = std::make_shared<AdjustPlugin>("abcdefghijkl", true);
    launch(plugin);
    platform_->console().clear();
    const std::vector<std::uint8_t> token{0, 255, 16};
    plugin->didRegisterForRemoteNotificationsWithDeviceToken(*UIApplication::shared(), token);
    EXPECT_EQ(adjust_.callsOf<RecordingAdjust::PushToken>().at(0).bytes, token);
    adjust_.callDelegate([](AdjustDelegate& to) {
        to.adjustAttributionChanged(
            ADJAttribution{.network = "n", .campaign = "c", .adgroup = "g", .adid = "a"});
        to.adjustAttributionChanged(ADJAttribution{.network = "n", .adid = "a"});
        to.adjustEventTrackingFailed(ADJEventFailure{.eventToken = "t"});
        to.adjustEventTrackingSucceeded(ADJEventSuccess{.eventToken = "t"});
        to.adjustEventTrackingSucceeded({});
        to.adjustSessionTrackingFailed(ADJSessionFailure{.message = "m"});
        to.adjustSessionTrackingSucceeded(ADJSessionSuccess{.message = "m"});
        to.adjustConversionValueUpdated(-7);
        to.adjustConversionValueUpdated({});
        EXPECT_TRUE(to.adjustDeeplinkResponse("app://offer"));
    });
    platform_->runUntilIdle();
    EXPECT_THAT(lines(),
                ElementsAre("n - c - g - a  attribution -- Adjust", "n -  -  - a  attribution -- Adjust",
                            "t  was failed to be sent by -- Adjust", "t was sent successfully -- Adjust",
                            " was sent successfully -- Adjust", "m sessionFailureResponseData -- Adjust",
                            "m sessionSuccessResponseData -- Adjust", "-7 conversion value updated -- Adjust",
                            " conversion value updated -- Adjust"));
}

} // namespace
} // namespace corvantile
