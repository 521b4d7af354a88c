#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <stdexcept>

namespace corvantile::ErrorTest {

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

TEST(FatalErrorDeathTest, NamesThePlaceWithoutItsFolderAndEnding) {
    const auto here = "Corvantile/ErrorTest:" + std::to_string(__LINE__ + 1);
    const auto end = [] { fatalError("x"); };
    EXPECT_DEATH(end(), Eq(here + ": Fatal error: x\n"));
    EXPECT_DEATH(fatalError("", "Plain", 3), Eq("Corvantile/Plain:3: Fatal error\n"));
    EXPECT_DEATH(fatalError("x", "/a.b/Some.Plugin.cpp", 3),
                 Eq("Corvantile/Some.Plugin:3: Fatal error: x\n"));
    EXPECT_DEATH(unimplementedInitializer("Some"),
                 "Fatal error: Use of unimplemented initializer 'init\\(\\)' for class 'Corvantile.Some'\n$");
}

} // namespace corvantile::ErrorTest
