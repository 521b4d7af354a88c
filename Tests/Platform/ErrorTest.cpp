#include "Platform/FatalError.hpp"
#include "Platform/Foundation/NSError.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

namespace corvantile {
namespace {

using testing::Eq;

TEST(NSError, HasATextForPeopleAndDescribesDomainCodeTextAndUserInfo) {
    const NSError described("SKErrorDomain", 2,
                            {{NSError::localizedDescriptionKey, "No sale."}, {"Key", "value"}});
    EXPECT_EQ(described.localizedDescription(), "No sale.");
    EXPECT_EQ(describe(described), "Error Domain=SKErrorDomain Code=2 \"No sale.\" UserInfo={Key=value, "
                                   "NSLocalizedDescription=No sale.}");
    EXPECT_EQ(describe(NSError("Net", -1, {{"Key", "value"}})),
              "Error Domain=Net Code=-1 \"(null)\" UserInfo={Key=value}");
}

TEST(NSError, IsFoundInWhateverAnErrorPointerHolds) {
    const struct {
        std::exception_ptr error;
        std::string_view description, forPeople;
    } cases[] = {{nullptr, "nil", ""},
                 {std::make_exception_ptr(NSError("Net", 7)), "Error Domain=Net Code=7 \"(null)\"",
                  "The operation couldn’t be completed. (Net error 7.)"},
                 {std::make_exception_ptr(std::runtime_error("broken")), "broken", "broken"},
                 {std::make_exception_ptr(7), "unknown error", "unknown error"}};

    for (const auto& [error, description, forPeople] : cases) {
        EXPECT_EQ(describe(error), description);
        EXPECT_EQ(localizedDescription(error), forPeople);
    }
}

// Where the call stands in this file, as the report names it.
std::string place(int line) { return "Corvantile/ErrorTest:" + std::to_string(line); }

TEST(FatalErrorDeathTest, NamesThePlaceOfTheCallOrTheOneGiven) {
    EXPECT_DEATH(fatalError("Wired wrongly."), Eq(place(__LINE__) + ": Fatal error: Wired wrongly.\n"));
    EXPECT_DEATH(fatalError(""), Eq(place(__LINE__) + ": Fatal error\n"));
    EXPECT_DEATH(fatalErrorAt("Router", 70, "Nobody."), Eq("Corvantile/Router:70: Fatal error: Nobody.\n"));
    EXPECT_DEATH(fatalError("x", "/a.b/Some.Plugin.cpp", 3),
                 Eq("Corvantile/Some.Plugin:3: Fatal error: x\n"));
    EXPECT_DEATH(fatalError("x", "Plain", 3), Eq("Corvantile/Plain:3: Fatal error: x\n"));
    const auto* const report =
        ": Fatal error: Use of unimplemented initializer 'init()' for class 'Corvantile.Some'\n";
    EXPECT_DEATH(unimplementedInitializer("Some"), Eq(place(__LINE__) + report));
}

} // namespace
} // namespace corvantile
