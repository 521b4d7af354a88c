#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/Database/ApplicationState.hpp"
#include "Corvantile/Plugin/Database/UserPreference.hpp"
#include "CorvantileTest/ScriptedRandom.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

#include <stdexcept>

namespace corvantile::DatabasePluginTest {

using namespace std::chrono_literals;

// A host's own store: holds the settings only, and takes nothing, of which it makes a note. What it throws is
// no NSError.
class RefusingStore final : public DatabaseManipulating {
public:
    explicit RefusingStore(std::vector<std::string>& trace) : trace_(trace) {}

    [[nodiscard]] std::optional<std::string> getData(std::string_view key, DatabaseCryptor*) const override {
        if (key.starts_with("Setting_")) return encodeJSON(Setting());
        throw std::runtime_error("disk");
    }
    void deleteAll(std::string_view) override {}

private:
    void setText(const std::optional<std::string>&, std::string_view key, DatabaseCryptor*) override {
        trace_.push_back("refused " + std::string(key.substr(0, key.find('_'))));
        throw std::runtime_error("disk");
    }

    std::vector<std::string>& trace_;
};

// A host with the two storage plug-ins; each launch is a process of its own on the same device.
class Storage : public ProcessTest {
protected:
    void launch(std::shared_ptr<DatabaseManipulating> store = nullptr) {
        preference_.reset();
        database_.reset();
        platform_ = TestPlatform::relaunch(std::move(platform_));
        atStart_();
        trace_.clear();
        if (!store) store = std::make_shared<UserDefaultsDatabase>();
        preference_ = std::make_shared<UserPreference>(std::move(store));
        database_ = std::make_shared<DatabasePlugin>();
        database_->application().subscribe(
            [this](const Application& record) { hear("application " + describe(record.updatedTime)); });
        database_->setting().subscribe([this](const Setting& record) {
            hear(record.reviewAppEnabled ? "setting review" : "setting quiet");
        });
        database_->isLoaded().subscribe([this](bool) { hear("loaded"); });
        const auto delegate = std::make_shared<PluggableApplicationDelegate>(
            PluggableApplicationDelegate::Plugins{preference_, database_});
        UIApplication::shared()->setDelegate(delegate);
        EXPECT_TRUE(delegate->didFinishLaunchingWithOptions(*UIApplication::shared(), {}));
    }
    // What the host hears of its records.
    std::vector<std::string> launchAndLoad() {
        launch();
        platform_->advance(1s);
        return news();
    }
    void hear(const std::string& what) {
        EXPECT_TRUE(DispatchQueue::main()->isCurrent()) << what;
        trace_.push_back(what);
    }
    std::vector<std::string> news() {
        platform_->runUntilIdle();
        return std::exchange(trace_, {});
    }
    std::vector<std::string> storedKeys() {
        std::vector<std::string> keys;
        for (const auto& [key, value] : device_.defaults().values()) keys.push_back(key);
        return keys;
    }

    std::function<void()> atStart_ = [] {}; // of each process
    std::shared_ptr<UserPreference> preference_;
    std::shared_ptr<DatabasePlugin> database_;
    std::vector<std::string> trace_;
    const std::string never_ = "application 1970-01-01 00:00:00 +0000";
};

TEST_F(Storage, LoadsDefaultsExactlyASecondAfterLaunchAndThenResetsOnceAsAskedBefore) {
    launch();
    database_->resetApplication(); // waits for the first record
    platform_->advance(1s - 1ns);
    EXPECT_THAT(news(), IsEmpty());
    platform_->advance(1ns);
    EXPECT_THAT(news(),
                ElementsAre(never_, "setting review", "loaded", "application " + describe(device_.now())));
    const auto id = *device_.vendorIdentifier();
    EXPECT_THAT(storedKeys(),
                ElementsAre("appconfig_Application_" + id, "appconfig_Setting_" + id, "appconfig_uuidKey"));
}

TEST_F(Storage, KeepsRecordsEncryptedUntilAReinstallAndTheirKeyBeyondIt) {
    launchAndLoad();
    database_->update({{}, true, false});
    database_->resetApplication();
    const auto stamped = news().back();
    for (const auto& [name, value] : device_.defaults().values())
        EXPECT_THAT(std::get<std::string>(value), Not(HasSubstr("\""))) << name;
    EXPECT_THAT(launchAndLoad(), ElementsAre(stamped, "setting quiet", "loaded"));

    const auto entries = device_.keychain().entries();
    const auto identifier = device_.vendorIdentifier();
    preference_.reset(), database_.reset(); // no plug-in outlives its process
    platform_ = TestPlatform::reinstall(std::move(platform_));
    EXPECT_THAT(launchAndLoad(), ElementsAre(never_, "setting review", "loaded"));
    EXPECT_THAT(storedKeys(), SizeIs(3)); // nothing of the user before
    EXPECT_EQ(device_.keychain().entries(), entries);
    EXPECT_NE(device_.vendorIdentifier(), identifier);
}

TEST_F(Storage, StandsADefaultInForARecordThatCannotBeRead) {
    launchAndLoad();
    device_.defaults().set("appconfig_Application_" + *device_.vendorIdentifier(), "damaged");

    database_->reloadApplication();
    database_->resetApplication(); // neither emitted nor written
    EXPECT_THAT(news(), IsEmpty());

    EXPECT_THAT(launchAndLoad(), ElementsAre(never_, "setting review", "loaded"));
}

TEST_F(Storage, TellsAChangeButNoDefaultThatTheStoreThenRefuses) {
    launch(std::make_shared<RefusingStore>(trace_));
    platform_->advance(1s);
    EXPECT_THAT(news(), ElementsAre("refused uuidKey", "refused Application", "setting review", "loaded"));
    database_->update({{}, true, false});
    EXPECT_THAT(news(), ElementsAre("setting quiet", "refused Setting"));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(Storage, PrintsWhatABlockThrows) {
    launchAndLoad();
    preference_->asyncOpen([](DatabaseManipulating&, const std::string&) { throw NSError("d", 3); });
    platform_->runUntilIdle();
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("(d error 3.)")));
}

TEST_F(Storage, UsesTheKeyThatTheKeychainTurnsOutToHold) {
    launchAndLoad();
    database_->update({{}, true, false});
    news();
    const auto entries = device_.keychain().entries();
    device_.keychain().lockForNextLoad(); // as when another process saves its key between load and save
    EXPECT_THAT(launchAndLoad(), ElementsAre(never_, "setting quiet", "loaded"));

    device_.keychain().setLocked(true);
    EXPECT_THAT(launchAndLoad(), ElementsAre(never_, "setting review", "loaded")) << "under another key";
    device_.keychain().setLocked(false);
    database_->update({{}, true, false});
    database_->resetApplication(); // its record can be read in this process only
    const auto touched = "application " + describe(device_.now());
    EXPECT_THAT(news(), ElementsAre("setting quiet", touched));
    EXPECT_THAT(launchAndLoad(), ElementsAre(touched, "setting quiet", "loaded"));
    EXPECT_EQ(device_.keychain().entries(), entries);
}

TEST_F(Storage, TriesToSaveItsKeyBeforeEachRecord) {
    for (int refused = 0; refused < 4; ++refused) device_.keychain().denyNextSave();
    launchAndLoad(); // one save as the key is made, three before records
    database_->update({{}, true, false});
    platform_->runUntilIdle();
    EXPECT_THAT(launchAndLoad(), Contains("setting quiet"));
}

TEST_F(Storage, DoesNothingWithoutAUser) {
    launchAndLoad();
    preference_->invalidate();

    database_->update({{}, true, false});
    database_->reloadApplication();
    const auto note = [this](DatabaseManipulating&, const std::string& user) { trace_.push_back(user); };
    preference_->asyncOpen(note);
    EXPECT_THAT(news(), IsEmpty());

    preference_->asyncOpen(note);
    preference_->loadDatabase("somebody"); // before the main queue gets to the block
    EXPECT_THAT(news(), ElementsAre("somebody"));
}

TEST_F(Storage, TakesTheHostsIdentifierElseTheDevicesElseMakesOne) {
    device_.defaults().set("uuidKey", "host's own");
    launchAndLoad();
    EXPECT_THAT(storedKeys(),
                ElementsAre("appconfig_Application_host's own", "appconfig_Setting_host's own", "uuidKey"));
    device_.defaults().set("uuidKey", "");
    launchAndLoad();
    EXPECT_THAT(storedKeys(), Contains("appconfig_Setting_" + *device_.vendorIdentifier()));

    preference_->deleteAll();
    platform_->runUntilIdle();
    EXPECT_THAT(storedKeys(), ElementsAre("uuidKey")); // the host's own
    device_.setVendorIdentifier(std::nullopt);
    launchAndLoad();
    EXPECT_THAT(storedKeys(),
                Contains(testing::MatchesRegex("appconfig_Setting_[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-"
                                               "[89AB][0-9A-F]{3}-[0-9A-F]{12}")));
}

TEST_F(Storage, MakesAKeyForTheProcessWhereTheEntryHoldsNone) {
    const KeychainDictionary entries[] = {{{"key", 1}}, {{"another", "text"}}};
    for (const auto& entry : entries) {
        device_.defaults().removeAll();
        device_.keychain().update(entry, "realm_encryption_key", "com.example.app");
        launchAndLoad();
        EXPECT_EQ(storedKeys().size(), 3u);
        EXPECT_EQ(device_.keychain().entries().at(0).dictionary, entry);
    }
}

TEST_F(Storage, KeepsItsKeyInTheKeychainEvenOneOfZerosWhereRandomBytesFail) {
    atStart_ = [this] { platform_->random().setFails(true); };
    launchAndLoad();
    const KeychainDictionary key{{"key", std::string(86, 'A') + "=="}}; // 64 bytes
    EXPECT_THAT(device_.keychain().entries(),
                ElementsAre(DeviceKeychain::Entry{"com.example.app", "realm_encryption_key", key}));
}

TEST_F(Storage, LabelsItsPipelinesWhileDebugging) {
    atStart_ = [] { Corvantile::setDebug(true); };
    launchAndLoad();
    database_->resetApplication();
    platform_->runUntilIdle();
    EXPECT_THAT(lines(), testing::IsSupersetOf(
                             {HasSubstr("(application(_:didFinishLaunchingWithOptions:)) -> Event completed"),
                              HasSubstr("(resetApplication()) -> isDisposed")}));
    EXPECT_EQ(lines().size(), 7u) << "a reset ends at the first record, before it is told";
}

TEST(ApplicationState, MirrorsTheRecordAndTellsOfChanges) {
    ApplicationState state(Application{Date{5}});
    std::vector<double> times;
    state.observeUpdatedTime().subscribe([&](Date time) { times.push_back(time.secondsSinceReference); });
    state.setPrimaryID(3);
    state.setApplication({Date{0.1}});

    EXPECT_THAT(times, ElementsAre(5, 0.1));
    EXPECT_EQ(encodeJSON(state), R"({"primaryID":3,"updatedTime":0.1})");
    EXPECT_EQ(ApplicationState::fromJSON(encodeJSON(state))->application(), Application{Date{0.1}});
    EXPECT_EQ(ApplicationState::fromJSON(R"({"primaryID":3.5,"updatedTime":0})"), nullptr);
}

} // namespace corvantile::DatabasePluginTest
