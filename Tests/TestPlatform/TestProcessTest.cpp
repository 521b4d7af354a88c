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

using namespace std::chrono_literals;

using Lines = std::vector<std::string>;

// Speaks up when it goes, in whatever way the process ends.
struct Speaker {
    ~Speaker() { Platform::current().ports().console->print("gone"); }
};

TEST(TestProcess, SpeaksToItsEndUnlessItIsKilled) {
    TestDevice device;
    for (const bool isKilled : {false, true}) {
        auto platform = TestPlatform::launch(device);
        const auto queue = platform->ports().queues->main();
        const auto console = std::static_pointer_cast<RecordingConsole>(platform->ports().console);
        console->print("alive");
        queue->async([s = std::make_shared<Speaker>()] { FAIL() << "ran after the end"; });

        if (isKilled) platform->kill();
        platform.reset();

        EXPECT_EQ(console->lines(), isKilled ? Lines{"alive"} : (Lines{"alive", "gone"}));
        EXPECT_FALSE(Platform::isInstalled());
    }
}

TEST(TestProcess, TakesTurnsWithAnotherOnTheSameDevice) {
    TestDevice device;
    auto app = TestPlatform::launch(device);
    const auto extension = TestPlatform::launch(device);
    const auto say = [](std::string text) {
        return [line = std::move(text)] { Platform::current().ports().console->print(line); };
    };
    app->ports().queues->main()->asyncAfter(1s, say("app"));
    extension->ports().queues->main()->asyncAfter(1s, say("extension"));

    app->advance(1s);
    EXPECT_EQ(&Platform::current(), extension.get());
    EXPECT_EQ(app->console().text(), "app\n");
    EXPECT_EQ(extension->console().text(), "");
    extension->runUntilIdle(); // its second has passed as well
    EXPECT_EQ(extension->console().text(), "extension\n");

    app->makeCurrent();
    EXPECT_EQ(&Platform::current(), app.get());
    extension->makeCurrent();
    app.reset();
    EXPECT_EQ(&Platform::current(), extension.get());
}

} // namespace
} // namespace corvantile
