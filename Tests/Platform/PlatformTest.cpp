#include "Platform/Platform.hpp"

#include "Platform/Application/UIApplication.hpp"
#include "Platform/Application/UIApplicationDelegate.hpp"
#include "Platform/Foundation/Console.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "TestPlatform/RecordingConsole.hpp"
#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvantile {
namespace {

void say(const std::string& text) { Platform::current().ports().console->print(text); }

// Part of a host: says on the console that it goes, and posts once more, which nobody runs any more.
class Witness {
public:
    explicit Witness(std::string name) : name_(std::move(name)) {}
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;
    ~Witness() {
        say(name_ + " gone");
        DispatchQueue::main()->async([name = name_] { say(name + " posted and ran"); });
    }

private:
    std::string name_;
};

class WitnessingDelegate final : public UIApplicationDelegate {
    Witness witness_{"delegate"};
};

struct FirstRecord {
    Witness inside{"first record"};
    std::unique_ptr<Witness> held = std::make_unique<Witness>("held by the first record");
    void release() { held.reset(); }
};

struct SecondRecord {
    void release() { say("second record released"); }
};

TEST(Platform, EndsQueuesThenDelegateThenRecordsWhileThePortsStand) {
    TestDevice device;
    auto platform = TestPlatform::launch(device);
    const auto ports = platform->ports();
    const auto& console = platform->console();
    static_cast<void>(platform->process().record<FirstRecord>());
    static_cast<void>(platform->process().record<SecondRecord>());
    ports.application->setDelegate(std::make_shared<WitnessingDelegate>());
    ports.queues->main()->asyncAfter(std::chrono::hours(1), [w = std::make_shared<Witness>("timer")] {});
    ports.queues->main()->async([w = std::make_shared<Witness>("item")] { say("an item ran"); });

    platform.reset();

    EXPECT_EQ(console.lines(), (std::vector<std::string>{"item gone", "timer gone", "delegate gone",
                                                         "held by the first record gone",
                                                         "second record released", "first record gone"}));
}

TEST(Platform, IsCurrentFromItsLaunchToItsEndUnlessAnotherIs) {
    EXPECT_FALSE(Platform::isInstalled());
    TestDevice device;
    auto first = TestPlatform::launch(device);
    EXPECT_EQ(&Platform::current(), first.get());
    auto second = TestPlatform::launch(device);

    first.reset();
    EXPECT_EQ(&Platform::current(), second.get());
    second.reset();
    EXPECT_FALSE(Platform::isInstalled());
}

TEST(PlatformDeathTest, ReportsPluginsThatOutliveItsProcess) {
    TestDevice device;
    auto platform = TestPlatform::launch(device);
    ++*platform->process().livePlugins();

    EXPECT_DEATH(platform.reset(), "1 plug-in outlived its process");
    EXPECT_DEATH(platform->kill(), "1 plug-in outlived its process");
    --*platform->process().livePlugins();
}

class ForgetfulPlatform final : public Platform {
public:
    ForgetfulPlatform() : Platform({}) {}

private:
    void stop() override {}
    void reportOutlived(int) override {}
};

TEST(PlatformDeathTest, NamesItsWiringMistakes) {
    EXPECT_DEATH(static_cast<void>(DispatchQueue::main()), "No platform is installed");
    EXPECT_DEATH(ForgetfulPlatform(), "destroyed before it was ended");
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    platform->kill();
    EXPECT_DEATH(static_cast<void>(platform->process()), "has ended");
}

} // namespace
} // namespace corvantile
