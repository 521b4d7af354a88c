#include "Platform/Application/UIApplication.hpp"
#include "Platform/Application/UIApplicationDelegate.hpp"
#include "Platform/Application/UIDevice.hpp"
#include "Platform/Foundation/Clock.hpp"
#include "Platform/Foundation/NSBundle.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

// The small ports: what an app learns of itself, its device and the time.
namespace corvantile {
namespace {

using namespace std::chrono_literals;
using testing::MatchesRegex;

template <class Harness>
class AppContract : public PortContract<Harness> {};
TYPED_TEST_SUITE(AppContract, Harnesses);

class Delegate final : public UIApplicationDelegate {};

TYPED_TEST(AppContract, OwnsItsDelegateUntilAnotherComesOrTheProcessEnds) {
    const auto application = UIApplication::shared();
    EXPECT_EQ(application->delegate(), nullptr);
    std::weak_ptr<UIApplicationDelegate> last;
    for (int i = 0; i < 2; ++i) {
        application->setDelegate(std::make_shared<Delegate>());
        EXPECT_TRUE(last.expired());
        last = application->delegate();
        EXPECT_FALSE(last.expired());
    }
    this->endProcess();
    EXPECT_TRUE(last.expired());
}

TYPED_TEST(AppContract, DescribesItsDevice) {
    const auto identifier = UIDevice::current()->identifierForVendor();

    EXPECT_THAT(identifier.value(),
                MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}"));
    EXPECT_EQ(UIDevice::current()->identifierForVendor(), identifier);
    EXPECT_THAT(UIDevice::current()->systemVersion(), MatchesRegex("[0-9]+(\\.[0-9]+)*"));
}

TYPED_TEST(AppContract, NamesItselfAndReadsItsResourcesByteForByteAndNoOthers) {
    const auto bundle = NSBundle::main();
    EXPECT_EQ(bundle->bundleIdentifier(), contractBundle);
    EXPECT_EQ(bundle->resource(contractResourceName, contractResourceExtension), contractResource);

    const std::pair<std::string_view, std::string_view> others[] = {
        {"Sample", "txt"}, {"Sample", ""}, {"sample", "bin"}, {"", ""}, {"..", ""}};
    for (const auto& [name, extension] : others)
        EXPECT_EQ(bundle->resource(name, extension), std::nullopt) << name << "." << extension;
}

TYPED_TEST(AppContract, HasAClockThatGoesOnWhileItWaits) {
    const auto& clock = *this->ports().clock;
    const auto start = clock.now();

    bool done = false;
    this->mainQueue()->asyncAfter(20ms, [&] { done = true; });
    ASSERT_TRUE(this->runUntil([&] { return done; }));

    EXPECT_GE(clock.now() - start, 19ms);
    EXPECT_LT(clock.now() - start, 10s);
    EXPECT_LT(std::chrono::abs(clock.localOffset(start)), 24h);
}

} // namespace
} // namespace corvantile
