#include "CorvantilePlatform/Platform.hpp"

#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantileTest/RecordingConsole.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/TestPlatform.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

namespace corvantile::PlatformTest {

void say(const std::string& text) { Platform::current().ports().console->print(text); }

// Part of a host: says on the console that it goes, and posts once more, which nobody runs any more.
std::shared_ptr<void> witness(const std::string& name) {
    return {nullptr, [name](void*) {
                say(name + " gone");
                DispatchQueue::main()->async([name] { say(name + " posted and ran"); });
            }};
}

class WitnessingDelegate final : public UIApplicationDelegate {
    const std::shared_ptr<void> witness_ = witness("delegate");
};

struct Record {
    std::shared_ptr<void> inside = witness("record"), held = witness("held by the record");
    void release() { held.reset(); }
};

TEST(Platform, EndsQueuesThenDelegateThenRecordsWhileThePortsStand) {
    TestDevice device;
    auto platform = TestPlatform::launch(device);
    const auto ports = platform->ports();
    const auto& console = platform->console();
    static_cast<void>(platform->process().record<Record>());
    ports.application->setDelegate(std::make_shared<WitnessingDelegate>());
    ports.queues->main()->asyncAfter(std::chrono::hours(1), [w = witness("timer")] {});
    ports.queues->main()->async([w = witness("item")] { say("an item ran"); });

    platform.reset();

    EXPECT_EQ(console.lines(), (std::vector<std::string>{"item gone", "timer gone", "delegate gone",
                                                         "held by the record gone", "record gone"}));
}

TEST(Platform, IsCurrentAgainWhenTheOneInstalledAfterItHasEnded) {
    TestDevice device, otherDevice, thirdDevice;
    const auto first = TestPlatform::launch(device);
    auto second = TestPlatform::launch(otherDevice), third = TestPlatform::launch(thirdDevice);

    second.reset();
    EXPECT_EQ(&Platform::current(), third.get());
    third.reset();
    EXPECT_EQ(&Platform::current(), first.get());
}

TEST(PlatformDeathTest, NamesMistakesOfItsHost) {
    EXPECT_DEATH(static_cast<void>(DispatchQueue::main()), "No platform is installed");
    TestDevice device;
    auto platform = TestPlatform::launch(device);
    ++*platform->process().livePlugins();
    EXPECT_DEATH(platform.reset(), "1 plug-in outlived its process");
    EXPECT_DEATH(platform->kill(), "1 plug-in outlived its process");
    --*platform->process().livePlugins();
    platform->kill();
    EXPECT_DEATH(static_cast<void>(platform->process()), "has ended");
}

} // namespace corvantile::PlatformTest
