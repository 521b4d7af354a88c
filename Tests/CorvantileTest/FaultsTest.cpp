#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

// What a test can do to the device under an app.
namespace corvantile::FaultsTest {

using Dictionary = NSUserDefaults::Dictionary;

const std::string service = "com.example.app";
const KeychainDictionary entry = {{"number", 1}};

class Faults : public testing::Test {
protected:
    // As the app reaches them.
    [[nodiscard]] NSUserDefaults& defaults() { return *platform_->ports().userDefaults; }
    [[nodiscard]] Locksmith& keychain() { return *platform_->ports().keychain; }

    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_ =
        TestPlatform::launch(device_, {.reportsUnreadableEntries = true});
};

TEST_F(Faults, AKilledProcessSaysAndChangesNothingAnyMore) {
    defaults().setValue("value", "key");
    keychain().save(entry, "before", service);
    const auto ports = platform_->ports();
    const auto sayGone = [&ports](void*) { ports.console->print("gone"); };
    ports.queues->main()->async([end = std::shared_ptr<void>(nullptr, sayGone)] {});
    platform_->kill();

    ports.userDefaults->setValue("too late", "key");
    ports.keychain->save(entry, "after", service);
    ports.keychain->update({}, "before", service);
    EXPECT_FALSE(ports.keychain->remove("before", service));

    EXPECT_EQ(platform_->console().text(), "");
    EXPECT_EQ(device_.defaults().values(), (Dictionary{{"key", "value"}}));
    EXPECT_THAT(device_.keychain().entries(), ElementsAre(DeviceKeychain::Entry{service, "before", entry}));
}

TEST_F(Faults, DefaultsThatCannotBeWrittenTakeEverythingLaterUnlessTheProcessEnds) {
    auto& kept = device_.defaults();
    for (const bool isKilled : {false, true}) {
        kept.set("removed", "before");
        kept.setWritable(false);
        defaults().setValue("value", "key");
        defaults().removeObjectForKey("removed");
        EXPECT_FALSE(defaults().synchronize());
        EXPECT_EQ(defaults().dictionaryRepresentation(), (Dictionary{{"key", "value"}}));

        if (isKilled) platform_->kill();
        kept.setWritable(true);
        EXPECT_EQ(isKilled ? "value" : defaults().stringForKey("key"), "value"); // written at the next call
        EXPECT_EQ(kept.values(),
                  (isKilled ? Dictionary{{"removed", "before"}} : Dictionary{{"key", "value"}}));
        kept.set("key", std::nullopt);
    }
}

TEST_F(Faults, TheKeychainSaysWhichEntriesItCannotReadWhenAsked) {
    device_.keychain().makeUnreadable("spoilt", service);
    EXPECT_EQ(keychain().load("spoilt", service), std::nullopt);
    EXPECT_EQ(keychain().load("never saved", service), std::nullopt);
    device_.keychain().setLocked(true);
    EXPECT_EQ(keychain().load("any", service), std::nullopt);

    const std::string begin = "Keychain: the entry \"",
                      end = "\" of \"com.example.app\" cannot be read and counts as absent: ";
    EXPECT_THAT(platform_->console().lines(), ElementsAre(begin + "spoilt" + end + "it is damaged.",
                                                          begin + "any" + end + "the keychain is locked."));
}

} // namespace corvantile::FaultsTest
