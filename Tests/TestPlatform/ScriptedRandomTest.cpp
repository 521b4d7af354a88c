#include "TestPlatform/ScriptedRandom.hpp"

#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>

namespace corvantile {
namespace {

std::string draw(TestPlatform& platform) {
    std::array<unsigned char, 8> bytes{};
    EXPECT_TRUE(platform.ports().random->copyBytes(bytes.data(), bytes.size()));
    return {bytes.begin(), bytes.end()};
}

TEST(ScriptedRandom, IsTheSameOnEveryDeviceAndGoesOnInTheNextProcess) {
    std::array<std::string, 2> drawn;
    for (auto& all : drawn) {
        TestDevice device;
        auto platform = TestPlatform::launch(device);
        const auto first = draw(*platform);
        platform = TestPlatform::relaunch(std::move(platform));
        const auto second = draw(*platform);
        EXPECT_NE(first, second);
        all = first + second;
    }
    EXPECT_EQ(drawn[0], drawn[1]);
}

TEST(ScriptedRandom, GivesOutWhatItWasProvidedWithFirst) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    platform->random().provide("twelve bytes");

    EXPECT_EQ(draw(*platform), "twelve b");
    EXPECT_TRUE(draw(*platform).starts_with("ytes"));
}

TEST(ScriptedRandom, LeavesTheBufferAloneWhileItFails) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    std::array<unsigned char, 4> bytes{1, 2, 3, 4};

    platform->random().setFails(true);
    EXPECT_FALSE(platform->ports().random->copyBytes(bytes.data(), bytes.size()));
    EXPECT_EQ(bytes, (std::array<unsigned char, 4>{1, 2, 3, 4}));

    platform->random().setFails(false);
    EXPECT_TRUE(platform->ports().random->copyBytes(bytes.data(), bytes.size()));
}

} // namespace
} // namespace corvantile
