#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "Corvantile/Plugin/Database/UserPreference.hpp"
#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"
#include "Tests/Contracts/Harness.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <chrono>
#include <memory>
#include <optional>

namespace corvantile::StorageStoriesTest {

// What the stream replays.
template <class T>
std::optional<T> latest(const rx::Observable<T>& stream) {
    std::optional<T> element;
    stream.subscribe([&](const T& replayed) { element = replayed; }).dispose();
    return element;
}

// What happens to an app's records in the course of its life, whatever the platform.
template <class Harness>
class StorageStory : public PortContract<Harness> {
protected:
    ~StorageStory() override { this->endProcess(); }

    // Launches the app in the process of the moment, and runs it until its records are loaded.
    void launchApp() {
        const auto app = UIApplication::shared();
        app->setDelegate(std::make_shared<PluggableApplicationDelegate>(PluggableApplicationDelegate::Plugins{
            std::make_shared<AnalyticPlugin>(),
            std::make_shared<UserPreference>(std::make_shared<UserDefaultsDatabase>()),
            std::make_shared<DatabasePlugin>(), std::make_shared<FirstDatePlugin>()}));
        app->delegate()->didFinishLaunchingWithOptions(*app, {});
        app->delegate()->didBecomeActive(*app);
        EXPECT_TRUE(this->runUntil([&] { return latest(database()->isLoaded()).has_value(); }));
    }

    [[nodiscard]] std::shared_ptr<DatabasePluggable> database() {
        return Corvantile::queryAppDelegate<DatabasePluggable>();
    }
    [[nodiscard]] auto application() { return latest(database()->application()); }
    [[nodiscard]] auto setting() { return latest(database()->setting()); }
    [[nodiscard]] NSUserDefaults::Dictionary stored() {
        return this->ports().userDefaults->dictionaryRepresentation();
    }
};

TYPED_TEST_SUITE(StorageStory, Harnesses);

TYPED_TEST(StorageStory, KeepsRecordsEncryptedUntilAReinstallAndTheFirstDateBeyondIt) {
    const Date longAgo{5 * 86400};
    Locksmith::saveData({{"firstDate", longAgo}}, "firstDate");
    this->launchApp();
    const Application never{Date::fromUnixSeconds(0)};
    EXPECT_EQ(this->application(), never);
    EXPECT_EQ(this->setting(), (Setting{defaultIapPolicy(), true, true}));
    EXPECT_THAT(this->stored(), SizeIs(3)); // and the user identifier
    for (const auto& [name, value] : this->stored())
        EXPECT_THAT(std::get<std::string>(value), Not(HasSubstr("\""))) << name;

    const Setting updated{{"one", "ü"}, false, true};
    this->database()->update(updated);
    this->database()->resetApplication();
    ASSERT_TRUE(this->runUntil([&] { return this->application() != never; }));
    const auto stamped = this->application();
    EXPECT_LT(this->ports().clock->now() - stamped->updatedTime, std::chrono::seconds(10));
    const auto storedBefore = this->stored();
    this->relaunch();
    this->launchApp();
    EXPECT_EQ(this->application(), stamped);
    EXPECT_EQ(this->setting(), updated);
    EXPECT_EQ(this->stored(), storedBefore);

    const auto device = UIDevice::current()->identifierForVendor();
    this->harness().reinstall();
    this->launchApp();
    EXPECT_NE(UIDevice::current()->identifierForVendor(), device);
    EXPECT_EQ(this->application(), Application());
    EXPECT_EQ(this->setting(), Setting());
    EXPECT_EQ(latest(Corvantile::queryAppDelegate<FirstDatePluggable>()->firstDate()), longAgo);
}

} // namespace corvantile::StorageStoriesTest
