#include "HostCore/HostCore.hpp"

#include "CorvantileIAP/InappHelper.hpp"
#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace corvantile {
namespace {

TEST(HostCoreSettings, BelongToTheirProcess) {
    TestDevice device;
    auto platform = TestPlatform::launch(device);
    const auto owned = std::make_shared<bool>(false);
    HostCore::setDebug(true);
    InappHelper::setDebug(true);
    HostCore::setOmitBlock([owned](const std::exception_ptr&) {});
    HostCore::setOmitBlock([owned](const std::exception_ptr& error) { *owned = error == nullptr; });
    EXPECT_EQ(owned.use_count(), 2);
    EXPECT_TRUE(HostCore::debug() && InappHelper::debug());
    HostCore::omitBlock()(nullptr);
    EXPECT_TRUE(*owned);

    platform = TestPlatform::relaunch(std::move(platform));

    EXPECT_FALSE(HostCore::debug() || InappHelper::debug());
    EXPECT_EQ(HostCore::omitBlock(), nullptr);
    EXPECT_EQ(owned.use_count(), 1);
}

} // namespace
} // namespace corvantile
