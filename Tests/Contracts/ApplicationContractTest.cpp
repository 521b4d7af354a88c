#include "Platform/Application/UIApplication.hpp"
#include "Platform/Application/UIApplicationDelegate.hpp"
#include "Platform/Application/UIDevice.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace corvantile {
namespace {

template <class Harness>
class ApplicationContract : public PortContract<Harness> {};
TYPED_TEST_SUITE(ApplicationContract, Harnesses);

class Delegate final : public UIApplicationDelegate {};

TYPED_TEST(ApplicationContract, OwnsItsDelegateUntilAnotherComesOrTheProcessEnds) {
    const auto application = UIApplication::shared();
    EXPECT_EQ(application->delegate(), nullptr);
    auto first = std::make_shared<Delegate>();
    auto second = std::make_shared<Delegate>();
    const std::weak_ptr<Delegate> weakFirst = first;
    const std::weak_ptr<Delegate> weakSecond = second;

    application->setDelegate(std::move(first));
    EXPECT_EQ(application->delegate(), weakFirst.lock());
    application->setDelegate(std::move(second));
    EXPECT_TRUE(weakFirst.expired());
    EXPECT_EQ(application->delegate(), weakSecond.lock());

    this->endProcess();
    EXPECT_TRUE(weakSecond.expired());
}

TYPED_TEST(ApplicationContract, DescribesItsDevice) {
    const auto identifier = UIDevice::current()->identifierForVendor();

    ASSERT_TRUE(identifier);
    EXPECT_THAT(*identifier,
                testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}"));
    EXPECT_EQ(UIDevice::current()->identifierForVendor(), identifier);
    EXPECT_THAT(UIDevice::current()->systemVersion(), testing::MatchesRegex("[0-9]+(\\.[0-9]+)*"));
}

} // namespace
} // namespace corvantile
