#include "Corvantile/Corvantile.hpp"

#include "Corvantile/DebugPlugin.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "Corvantile/RequireService.hpp"
#include "CorvantileIAP/InappHelper.hpp"
#include "HostCore/HostCore.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::CorvantileTest {

class EmptyDelegate : public UIApplicationDelegate {};

class StaticCorvantile : public ProcessTest {
protected:
    static std::shared_ptr<EmptyDelegate> givePlatformADelegate() {
        auto delegate = std::make_shared<EmptyDelegate>();
        UIApplication::shared()->setDelegate(delegate);
        return delegate;
    }
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

TEST_F(StaticCorvantile, HasTheDelegateThatIsAssignedOrElseThePlatformsOfTheFirstRead) {
    givePlatformADelegate();
    auto own = std::make_shared<EmptyDelegate>();
    const std::weak_ptr<EmptyDelegate> weak = own;
    Corvantile::setAppDelegate(std::move(own));
    EXPECT_EQ(Corvantile::appDelegate(), weak.lock());
    EXPECT_FALSE(weak.expired());

    platform_ = TestPlatform::relaunch(std::move(platform_));
    EXPECT_TRUE(weak.expired());
    const auto first = givePlatformADelegate();
    EXPECT_EQ(Corvantile::appDelegate(), first);
    givePlatformADelegate();
    EXPECT_EQ(Corvantile::appDelegate(), first);

    platform_ = TestPlatform::relaunch(std::move(platform_));
    EXPECT_EQ(Corvantile::appDelegate(), nullptr) << "there is none yet";
    givePlatformADelegate();
    EXPECT_EQ(Corvantile::appDelegate(), nullptr);
}

TEST_F(StaticCorvantile, FindsAServiceInAHostThatHoldsPluginsOnly) {
    EXPECT_EQ(Corvantile::queryAppDelegate<AnalyticPluggable>(), nullptr);
    Corvantile::setAppDelegate(std::make_shared<EmptyDelegate>());
    EXPECT_EQ(Corvantile::queryAppDelegate<AnalyticPluggable>(), nullptr);

    const PluggableApplicationDelegate::Plugins plugins{std::make_shared<AnalyticPlugin>()};
    Corvantile::setAppDelegate(std::make_shared<PluggableApplicationDelegate>(plugins));

    EXPECT_EQ(Corvantile::queryAppDelegate<AnalyticPluggable>(), plugins.front());
    EXPECT_EQ(Corvantile::queryAppDelegate<DebugPlugin>(), nullptr);
    EXPECT_EQ(requireService<AnalyticPluggable>(), plugins.front());
}

using StaticCorvantileDeathTest = StaticCorvantile;

TEST_F(StaticCorvantileDeathTest, ARequiredServiceThatIsMissingEndsTheProcess) {
    const auto here = "Corvantile/CorvantileTest:" + std::to_string(__LINE__ + 1);
    const auto require = [] { static_cast<void>(requireService<AnalyticPluggable>()); };
    EXPECT_DEATH(require(), Eq(here + ": Fatal error: This service require AnalyticPluggable.\n"));
    const std::string report = ":[0-9]+: Fatal error: This service require ";
    EXPECT_DEATH(DatabasePlugin().didFinishLaunchingWithOptions(*UIApplication::shared(), {}),
                 "^Corvantile/DatabasePlugin" + report + "UserPreferenceProtocol\\.\n$");
    Locksmith::saveData({{"firstDate", Date{}}}, "firstDate"); // even so
    EXPECT_DEATH(FirstDatePlugin().didBecomeActive(*UIApplication::shared()),
                 "^Corvantile/FirstDatePlugin" + report + "AnalyticPluggable\\.\n$");
}

} // namespace corvantile::CorvantileTest
