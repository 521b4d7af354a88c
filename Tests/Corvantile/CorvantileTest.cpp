#include "Corvantile/Corvantile.hpp"

#include "Corvantile/DebugPlugin.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/RequireService.hpp"
#include "CorvantileIAP/InappHelper.hpp"
#include "HostCore/HostCore.hpp"
#include "Platform/Application/UIApplication.hpp"
#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace corvantile {
namespace {

using testing::Eq;

class EmptyDelegate : public UIApplicationDelegate {};

class StaticCorvantile : public testing::Test {
protected:
    static std::shared_ptr<EmptyDelegate> givePlatformADelegate() {
        auto delegate = std::make_shared<EmptyDelegate>();
        UIApplication::shared()->setDelegate(delegate);
        return delegate;
    }

    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_ = TestPlatform::launch(device_);
};

TEST_F(StaticCorvantile, TheDebugPluginSetsEverySwitchOfItsProcess) {
    EXPECT_FALSE(Corvantile::debug() || Corvantile::dryRun());
    constexpr struct {
        bool debug, enableDryRun, dryRun;
    } cases[] = {{false, true, false}, {true, true, true}, {false, false, false}, {true, false, false}};
    for (const auto& [debug, enableDryRun, dryRun] : cases) {
        const DebugPlugin plugin(debug, enableDryRun);
        EXPECT_EQ(HostCore::debug(), debug);
        EXPECT_EQ(InappHelper::debug(), debug);
        EXPECT_EQ(Corvantile::debug(), debug);
        EXPECT_EQ(Corvantile::dryRun(), dryRun);
    }
    platform_ = TestPlatform::relaunch(std::move(platform_));
    EXPECT_FALSE(Corvantile::debug());
}

TEST_F(StaticCorvantile, AsksThePlatformForItsDelegateAtTheFirstReadAlone) {
    const auto first = givePlatformADelegate();
    EXPECT_EQ(Corvantile::appDelegate(), first);
    givePlatformADelegate();
    EXPECT_EQ(Corvantile::appDelegate(), first);
    Corvantile::setAppDelegate(nullptr);
    EXPECT_EQ(Corvantile::appDelegate(), nullptr);

    platform_ = TestPlatform::relaunch(std::move(platform_));
    EXPECT_EQ(Corvantile::appDelegate(), nullptr) << "there is none yet";
    givePlatformADelegate();
    EXPECT_EQ(Corvantile::appDelegate(), nullptr);

    platform_ = TestPlatform::relaunch(std::move(platform_));
    givePlatformADelegate();
    Corvantile::setAppDelegate(nullptr);
    EXPECT_EQ(Corvantile::appDelegate(), nullptr) << "written before it was read";
}

TEST_F(StaticCorvantile, HoldsTheDelegateUntilItIsReplacedOrTheProcessEnds) {
    auto first = std::make_shared<EmptyDelegate>();
    auto second = std::make_shared<EmptyDelegate>();
    const std::weak_ptr<EmptyDelegate> weakFirst = first, weakSecond = second;

    Corvantile::setAppDelegate(std::move(first));
    EXPECT_FALSE(weakFirst.expired());
    Corvantile::setAppDelegate(std::move(second));
    EXPECT_TRUE(weakFirst.expired());
    EXPECT_FALSE(weakSecond.expired());
    platform_.reset();
    EXPECT_TRUE(weakSecond.expired());
}

TEST_F(StaticCorvantile, FindsAServiceInAHostThatHoldsPluginsOnly) {
    EXPECT_EQ(Corvantile::queryAppDelegate<AnalyticPluggable>(), nullptr);
    Corvantile::setAppDelegate(std::make_shared<EmptyDelegate>());
    EXPECT_EQ(Corvantile::queryAppDelegate<AnalyticPluggable>(), nullptr);

    const PluggableApplicationDelegate::Plugins plugins{std::make_shared<AnalyticPlugin>()};
    Corvantile::setAppDelegate(std::make_shared<PluggableApplicationDelegate>(plugins));

    EXPECT_EQ(Corvantile::queryAppDelegate<AnalyticPluggable>(), plugins.front());
    EXPECT_NE(Corvantile::queryAppDelegate<AnalyticProtocol>(), nullptr);
    EXPECT_EQ(Corvantile::queryAppDelegate<DebugPlugin>(), nullptr);
    EXPECT_EQ(requireService<AnalyticPluggable>(), plugins.front());
    EXPECT_EQ(requireServiceAt<AnalyticPluggable>("X", 1), plugins.front());
}

using StaticCorvantileDeathTest = StaticCorvantile;

TEST_F(StaticCorvantileDeathTest, ARequiredServiceThatIsMissingEndsTheProcess) {
    const std::string message = ": Fatal error: This service require AnalyticPluggable.\n";
    const auto require = [] { static_cast<void>(requireService<AnalyticPluggable>()); };
    EXPECT_DEATH(require(), Eq("Corvantile/CorvantileTest:" + std::to_string(__LINE__ - 1) + message));
    EXPECT_DEATH(static_cast<void>(requireServiceAt<AnalyticPluggable>("Somewhere", 42)),
                 Eq("Corvantile/Somewhere:42" + message));
}

TEST_F(StaticCorvantileDeathTest, TheDebugPluginNeedsItsArguments) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    EXPECT_DEATH(DebugPlugin(),
                 "^Corvantile/DebugPlugin:[0-9]+: Fatal error: Use of unimplemented initializer "
                 "'init\\(\\)' for class 'Corvantile.DebugPlugin'\n$");
#pragma GCC diagnostic pop
}

} // namespace
} // namespace corvantile
