#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "Corvantile/Plugin/Database/UserPreference.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"
#include "Platform/Application/UIApplication.hpp"
#include "Platform/Application/UIDevice.hpp"
#include "Platform/Foundation/Clock.hpp"
#include "Platform/Foundation/NSUserDefaults.hpp"
#include "Platform/Keychain/Locksmith.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <vector>

namespace corvantile {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

// What happens to an app's records in the course of its life, whatever the platform.
template <class Harness>
class StorageStory : public PortContract<Harness> {
protected:
    ~StorageStory() override { this->endProcess(); }

    // Launches the app in the process of the moment, and runs it until its records are loaded.
    void launchApp() {
        applications.clear();
        settings.clear();
        firstDates.clear();
        auto database = std::make_shared<DatabasePlugin>();
        auto firstDate = std::make_shared<FirstDatePlugin>();
        bool isLoaded = false;
        database->application().subscribe([this](const Application& it) { applications.push_back(it); });
        database->setting().subscribe([this](const Setting& it) { settings.push_back(it); });
        firstDate->firstDate().subscribe([this](Date it) { firstDates.push_back(it); });
        const auto subscription = database->isLoaded().subscribe([&](bool it) { isLoaded = it; });

        const auto app = UIApplication::shared();
        app->setDelegate(std::make_shared<PluggableApplicationDelegate>(PluggableApplicationDelegate::Plugins{
            std::make_shared<AnalyticPlugin>(),
            std::make_shared<UserPreference>(std::make_shared<UserDefaultsDatabase>()), database,
            firstDate}));
        app->delegate()->didFinishLaunchingWithOptions(*app, {});
        app->delegate()->didBecomeActive(*app);
        EXPECT_TRUE(this->runUntil([&] { return isLoaded; }));
        subscription.dispose();
    }

    [[nodiscard]] std::shared_ptr<DatabasePluggable> database() {
        return Corvantile::queryAppDelegate<DatabasePluggable>();
    }
    [[nodiscard]] NSUserDefaults::Dictionary stored() {
        return this->ports().userDefaults->dictionaryRepresentation();
    }

    std::vector<Application> applications;
    std::vector<Setting> settings;
    std::vector<Date> firstDates;
};

TYPED_TEST_SUITE(StorageStory, Harnesses);

TYPED_TEST(StorageStory, KeepsRecordsEncryptedUntilAReinstallAndTheFirstDateBeyondIt) {
    const Date longAgo{5 * 86400};
    Locksmith::saveData({{"firstDate", longAgo}}, "firstDate");
    this->launchApp();
    EXPECT_THAT(this->applications, ElementsAre(Application{Date::fromUnixSeconds(0)}));
    EXPECT_THAT(this->settings, ElementsAre(Setting{defaultIapPolicy(), true, true}));
    EXPECT_THAT(this->stored(), SizeIs(3)); // and the user identifier
    for (const auto& [name, value] : this->stored())
        EXPECT_THAT(std::get<std::string>(value), Not(HasSubstr("\""))) << name;

    const Setting updated{{"one", "ü"}, false, true};
    this->database()->update(updated);
    this->database()->resetApplication();
    ASSERT_TRUE(this->runUntil([&] { return this->applications.size() > 1; }));
    const auto stamped = this->applications.at(1);
    EXPECT_LT(this->ports().clock->now() - stamped.updatedTime, std::chrono::seconds(10));
    const auto storedBefore = this->stored();
    this->relaunch();
    this->launchApp();
    EXPECT_THAT(this->applications, ElementsAre(stamped));
    EXPECT_THAT(this->settings, ElementsAre(updated));
    EXPECT_EQ(this->stored(), storedBefore);

    const auto device = UIDevice::current()->identifierForVendor();
    this->harness().reinstall();
    this->launchApp();
    EXPECT_NE(UIDevice::current()->identifierForVendor(), device);
    EXPECT_THAT(this->applications, ElementsAre(Application()));
    EXPECT_THAT(this->settings, ElementsAre(Setting()));
    EXPECT_THAT(this->firstDates, ElementsAre(longAgo));
}

} // namespace
} // namespace corvantile
