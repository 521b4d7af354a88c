#include "TestPlatform/DeviceKeychain.hpp"

#include "Platform/Foundation/NSError.hpp"
#include "TestPlatform/RecordingConsole.hpp"
#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvantile {
namespace {

using testing::ElementsAre;

const std::string service = "com.example.app";
const KeychainDictionary entry = {{"number", 1}};

class DeviceKeychainTest : public testing::Test {
protected:
    [[nodiscard]] DeviceKeychain& keychain() { return device_.keychain(); }
    // As the app reaches it.
    [[nodiscard]] Locksmith& app() { return *platform_->ports().keychain; }

    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_ =
        TestPlatform::launch(device_, {.reportsUnreadableEntries = true});
};

TEST_F(DeviceKeychainTest, OutlivesTheAppAndListsWhatItHolds) {
    app().save(entry, "b", service);
    app().save({}, "a", service);
    platform_ = TestPlatform::reinstall(std::move(platform_));
    app().save(entry, "c", "another service");

    EXPECT_THAT(keychain().entries(), ElementsAre(DeviceKeychain::Entry{"another service", "c", entry},
                                                  DeviceKeychain::Entry{service, "a", {}},
                                                  DeviceKeychain::Entry{service, "b", entry}));
    keychain().removeAll();
    EXPECT_EQ(app().load("b", service), std::nullopt);
}

TEST_F(DeviceKeychainTest, RefusesAsManyChangesAsItIsTold) {
    keychain().denyNextSave();
    keychain().denyNextSave(KeychainStatus::diskFull);
    keychain().denyNextUpdate(KeychainStatus::io);

    for (const auto status : {KeychainStatus::notAvailable, KeychainStatus::diskFull}) try {
            app().save(entry, "account", service);
            ADD_FAILURE() << "It was not refused.";
        } catch (const NSError& error) {
            EXPECT_TRUE(isKeychainError(error, status)) << error.what();
        }
    EXPECT_THROW(app().update(entry, "account", service), NSError);
    EXPECT_EQ(keychain().entries().size(), 0U);

    app().save(entry, "account", service);
    app().update(entry, "account", service);
}

TEST_F(DeviceKeychainTest, HidesASpoiltEntryThatStillIsInTheWay) {
    keychain().save(entry, "spoilt", service);
    keychain().makeUnreadable("spoilt", service);
    keychain().makeUnreadable("never saved", service);

    for (const auto* const account : {"spoilt", "never saved"}) {
        EXPECT_EQ(app().load(account, service), std::nullopt);
        EXPECT_THROW(app().save(entry, account, service), NSError);
        app().update(entry, account, service);
        EXPECT_EQ(app().load(account, service), entry);
    }
}

TEST_F(DeviceKeychainTest, CanOpenBetweenALoadAndTheSaveThatFollows) {
    keychain().save(entry, "account", service);
    keychain().lockForNextLoad();

    EXPECT_EQ(app().load("account", service), std::nullopt);
    EXPECT_THROW(app().save(entry, "account", service), NSError);
    EXPECT_EQ(app().load("account", service), entry);
}

TEST_F(DeviceKeychainTest, IsOutOfReachForAKilledProcess) {
    app().save(entry, "before", service);
    const auto port = platform_->ports().keychain;
    platform_->kill();

    port->save(entry, "after", service);
    port->update({}, "before", service);
    EXPECT_FALSE(port->remove("before", service));
    EXPECT_THAT(keychain().entries(), ElementsAre(DeviceKeychain::Entry{service, "before", entry}));
}

TEST_F(DeviceKeychainTest, SaysWhichEntriesItCannotReadOnlyWhenAsked) {
    keychain().makeUnreadable("spoilt", service);
    (void)app().load("spoilt", service);
    (void)app().load("never saved", service);
    keychain().setLocked(true);
    (void)app().load("any", service);

    EXPECT_THAT(
        platform_->console().lines(),
        ElementsAre("Keychain: the entry \"spoilt\" of \"com.example.app\" cannot be read and counts as "
                    "absent: it is damaged.",
                    "Keychain: the entry \"any\" of \"com.example.app\" cannot be read and counts as "
                    "absent: the keychain is locked."));
    const auto silent = TestPlatform::launch(device_);
    (void)silent->ports().keychain->load("any", service);
    EXPECT_EQ(silent->console().text(), "");
}

} // namespace
} // namespace corvantile
