#include "Platform/Foundation/NSError.hpp"

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <string_view>

namespace corvantile {
namespace {

const NSError described("SKErrorDomain", 2,
                        {{NSError::localizedDescriptionKey, "No sale."}, {"Key", "value"}});

TEST(NSError, HasATextForPeople) {
    EXPECT_EQ(described.localizedDescription(), "No sale.");
    EXPECT_EQ(NSError("Net", -1).localizedDescription(),
              "The operation couldn’t be completed. (Net error -1.)");
    EXPECT_STREQ(described.what(), "No sale.");
}

TEST(NSError, DescribesDomainCodeTextAndUserInfo) {
    EXPECT_EQ(describe(described), "Error Domain=SKErrorDomain Code=2 \"No sale.\" UserInfo={Key=value, "
                                   "NSLocalizedDescription=No sale.}");
    EXPECT_EQ(describe(NSError("Net", -1)), "Error Domain=Net Code=-1 \"(null)\"");
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

} // namespace
} // namespace corvantile
