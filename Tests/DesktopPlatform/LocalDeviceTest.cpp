#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Platform/Application/UIDevice.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <latch>
#include <thread>

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
    const auto second = identifierIn(folder);
    std::filesystem::remove_all(folder);
    const auto reinstalled = identifierIn(folder);

    ASSERT_TRUE(first && reinstalled);
    EXPECT_THAT(*first, testing::MatchesRegex(randomUuid));
    EXPECT_EQ(second, first);
    EXPECT_NE(reinstalled, first);
}

TEST(LocalDevice, CannotTellAnIdentifierThatItCannotKeep) {
    const TemporaryFolder home;
    std::ofstream(home.path() / "file") << "in the way";

    EXPECT_EQ(identifierIn(home.path() / "file" / "state"), std::nullopt);
}

TEST(LocalDevice, ReplacesAnIdentifierThatIsNone) {
    for (const auto* const damaged : {"", "not an identifier", "fdf275a7-7cc6-4216-9e99-e29472363784\n"}) {
        SCOPED_TRACE(damaged);
        const TemporaryFolder folder;
        std::ofstream(folder.path() / "vendor-identifier") << damaged;

        const auto made = identifierIn(folder.path());

        ASSERT_TRUE(made);
        EXPECT_EQ(identifierIn(folder.path()), made);
    }
}

TEST(LocalDevice, AgreesWithWhoeverAsksForTheFirstTimeAtTheSameMoment) {
    const TemporaryFolder folder;
    std::array<std::optional<std::string>, 4> found;
    DesktopPlatform platform({.stateFolder = folder.path()});
    std::latch start(found.size());
    {
        std::vector<std::thread> threads;
        for (auto& each : found)
            threads.emplace_back([&] {
                start.arrive_and_wait();
                each = UIDevice::current()->identifierForVendor();
            });
        for (auto& thread : threads) thread.join();
    }

    EXPECT_TRUE(found[0]);
    EXPECT_THAT(found, testing::Each(found[0]));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1)
        << "nothing is left behind";
}

} // namespace corvantile
