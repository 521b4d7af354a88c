#include "TestPlatform/DeviceDefaults.hpp"

#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

namespace corvantile {
namespace {

using testing::IsEmpty;
using Dictionary = NSUserDefaults::Dictionary;

class DeviceDefaultsTest : public testing::Test {
protected:
    [[nodiscard]] DeviceDefaults& kept() { return device_.defaults(); }
    // As the app reaches them.
    [[nodiscard]] NSUserDefaults& app() { return *platform_->ports().userDefaults; }

    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_ = TestPlatform::launch(device_);
};

TEST_F(DeviceDefaultsTest, KeepWhatAKilledProcessHasSet) {
    app().setValue("value", "key");
    const auto killed = platform_->ports().userDefaults;
    platform_->kill();
    killed->setValue("too late", "key");

    platform_ = TestPlatform::relaunch(std::move(platform_));
    EXPECT_EQ(app().stringForKey("key"), "value");
}

TEST_F(DeviceDefaultsTest, GoWithTheAppThatIsDeleted) {
    app().setValue("value", "key");
    platform_ = TestPlatform::reinstall(std::move(platform_));

    EXPECT_THAT(app().dictionaryRepresentation(), IsEmpty());
}

TEST_F(DeviceDefaultsTest, ReceiveLaterWhatTheyCouldNotTake) {
    kept().set("removed", "before");
    kept().setWritable(false);
    app().setValue("value", "key");
    app().removeObjectForKey("removed");

    EXPECT_FALSE(app().synchronize());
    EXPECT_EQ(app().dictionaryRepresentation(), (Dictionary{{"key", "value"}}));
    EXPECT_EQ(kept().values(), (Dictionary{{"removed", "before"}}));

    kept().setWritable(true);
    EXPECT_EQ(app().stringForKey("key"), "value");
    EXPECT_EQ(kept().values(), (Dictionary{{"key", "value"}}));
}

TEST_F(DeviceDefaultsTest, LoseWhatTheyCouldNotTakeWithItsProcess) {
    kept().setWritable(false);
    app().setValue("value", "key");
    platform_->kill();
    kept().setWritable(true);
    platform_ = TestPlatform::relaunch(std::move(platform_));

    EXPECT_EQ(app().valueForKey("key"), std::nullopt);
}

TEST_F(DeviceDefaultsTest, ReadAsEmptyWhileTheyAreUnreadable) {
    app().setValue("value", "key");
    kept().setReadable(false);
    EXPECT_EQ(app().valueForKey("key"), std::nullopt);

    kept().setReadable(true);
    EXPECT_EQ(app().stringForKey("key"), "value");
}

} // namespace
} // namespace corvantile
