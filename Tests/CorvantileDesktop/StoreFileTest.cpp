#include "CorvantileDesktop/Store/detail/StoreFile.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/Foundation/detail/SystemClock.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"
#include "Tests/CorvantileDesktop/StoreFiles.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"
#include "Tests/CorvantilePlatform/AtOnce.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <utility>

namespace corvantile::StoreFileTest {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(StoreFiles, AreSharedByProcessesThatBuyAtOnceAndSeeEachOthersPurchases) {
    const TemporaryFolder folder;
    const auto open = [&] {
        Catalogue catalogue;
        catalogue.add({.identifier = "gold", .price = NSDecimalNumber(1)});
        return LocalStore(
            {.catalogue = std::move(catalogue),
             .clock = std::make_shared<SystemClock>(),
             .storage = std::make_shared<StoreFile>(StoreFileOptions{.file = folder.path() / "store.sqlite",
                                                                     .console = {},
                                                                     .inBackground = [](const auto&) {}})});
    };
    auto one = open();
    auto other = open();

    atOnce(2, [&](int number) {
        for (int round = 0; round < 50; ++round) (number == 0 ? one : other).buyElsewhere("gold");
    });

    std::set<std::string> identifiers;
    for (const auto& purchase : one.purchases()) identifiers.insert(purchase.identifier);
    EXPECT_EQ(identifiers.size(), 100u);
    EXPECT_EQ(other.purchases(), one.purchases());
}

TEST(StoreFiles, AreNotNeededToSayWhyACatalogueCannotBeRead) {
    const TemporaryFolder folder;
    const auto console = std::make_shared<ListeningConsole>();
    DesktopOptions options{.stateFolder = folder.path() / "state", .console = console};
    options.store.catalogue = folder.path() / "none.storekit";
    DesktopPlatform platform(std::move(options));
    std::string said;
    const auto request = platform.ports().storeRequests->products(
        {"gold"}, platform.ports().queues->main(),
        [&](auto, const std::exception_ptr& error) { said = localizedDescription(error); });
    EXPECT_TRUE(platform.runMainLoopUntil([&] { return !said.empty(); }, std::chrono::seconds(10)));
    EXPECT_THAT(said, HasSubstr("none.storekit cannot be read."));
    EXPECT_THAT(console->lines, ElementsAre("The store sells nothing: " + said));
}

} // namespace corvantile::StoreFileTest
