#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Platform/Application/UIDevice.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <optional>

namespace corvantile {

namespace {

constexpr auto randomUuid = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";

// What a process of its own is told.
std::optional<std::string> identifierIn(const std::filesystem::path& stateFolder) {
    DesktopPlatform platform({.stateFolder = stateFolder});
    return UIDevice::current()->identifierForVendor();
}

} // namespace

TEST(LocalDevice, KeepsItsVendorIdentifierUntilItsFolderIsDeleted) {
    const TemporaryFolder home;
    const auto folder = home.path() / "made" / "when needed";

    const auto first = identifierIn(folder);
    EXPECT_EQ(identifierIn(folder), first);
    std::filesystem::remove_all(folder);

    EXPECT_THAT(first.value(), testing::MatchesRegex(randomUuid));
    EXPECT_NE(identifierIn(folder), first);
}

TEST(LocalDevice, ReplacesAnIdentifierThatIsNoneAndTellsNoneThatItCannotKeep) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "vendor-identifier";
    for (const auto* const damaged : {"", "not an identifier", "fdf275a7-7cc6-4216-9e99-e29472363784\n"}) {
        std::ofstream(file) << damaged;
        const auto made = identifierIn(folder.path());
        EXPECT_THAT(made.value(), testing::MatchesRegex(randomUuid)) << damaged;
        EXPECT_EQ(identifierIn(folder.path()), made);
    }
    EXPECT_EQ(identifierIn(file / "state"), std::nullopt); // a file is in the way
}

} // namespace corvantile
