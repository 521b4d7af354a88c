#include "Platform/FatalError.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace corvantile {
namespace {

using testing::Eq;

// Where the call stands in this file, as the report names it.
std::string place(int line) { return "Corvantile/FatalErrorTest:" + std::to_string(line); }

TEST(FatalErrorDeathTest, NamesTheCallersFileAndLine) {
    EXPECT_DEATH(fatalError("Wired wrongly."), Eq(place(__LINE__) + ": Fatal error: Wired wrongly.\n"));
}

TEST(FatalErrorDeathTest, DropsTheSecondColonWithoutAMessage) {
    EXPECT_DEATH(fatalError(""), Eq(place(__LINE__) + ": Fatal error\n"));
}

TEST(FatalErrorDeathTest, NamesAFixedPlaceWhereOneIsGiven) {
    EXPECT_DEATH(fatalErrorAt("Router", 70, "Nobody."), Eq("Corvantile/Router:70: Fatal error: Nobody.\n"));
}

TEST(FatalErrorDeathTest, CutsFolderAndLastEndingOfTheFileAlone) {
    EXPECT_DEATH(fatalError("x", "/a.b/Some.Plugin.cpp", 3),
                 Eq("Corvantile/Some.Plugin:3: Fatal error: x\n"));
    EXPECT_DEATH(fatalError("x", "Plain", 3), Eq("Corvantile/Plain:3: Fatal error: x\n"));
}

TEST(FatalErrorDeathTest, ReportsAnUnimplementedInitializerByItsClass) {
    const auto report =
        ": Fatal error: Use of unimplemented initializer 'init()' for class 'Corvantile.Some'\n";
    EXPECT_DEATH(unimplementedInitializer("Some"), Eq(place(__LINE__) + report));
}

} // namespace
} // namespace corvantile
