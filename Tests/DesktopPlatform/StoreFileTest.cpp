#include "DesktopPlatform/Store/StoreFile.hpp"
#include "DesktopPlatform/DesktopPlatform.hpp"
#include "DesktopPlatform/Foundation/SystemClock.hpp"
#include "LocalStore/LocalStore.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/NSError.hpp"
#include "Platform/Store/StoreRequests.hpp"
#include "Tests/DesktopPlatform/StoreFiles.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <thread>

namespace corvantile {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class StoreFiles : public testing::Test {
protected:
    [[nodiscard]] LocalStore open() const {
        Catalogue catalogue;
        catalogue.add({.identifier = "gold", .price = NSDecimalNumber(1)});
        const auto storage = std::make_shared<StoreFile>(
            StoreFileOptions{.file = file, .console = console, .inBackground = [](auto work) { work(); }});
        return LocalStore({.catalogue = std::move(catalogue),
                           .clock = std::make_shared<SystemClock>(),
                           .storage = storage,
                           .console = console});
    }

    TemporaryFolder folder;
    const fs::path file = folder.path() / "state" / "store.sqlite";
    const std::shared_ptr<ListeningConsole> console = std::make_shared<ListeningConsole>();
};

TEST_F(StoreFiles, AreSharedByProcessesThatBuyAtOnceAndSeeEachOthersPurchases) {
    auto one = open();
    auto other = open();
    const auto buy = [](LocalStore& store) {
        for (int round = 0; round < 50; ++round) store.buyElsewhere("gold");
    };
    std::thread buyer([&] { buy(one); });
    buy(other);
    buyer.join();
    std::set<std::string> identifiers;
    for (const auto& purchase : one.purchases()) identifiers.insert(purchase.identifier);
    EXPECT_EQ(identifiers.size(), 100u);
    EXPECT_EQ(other.purchases(), one.purchases());
}

TEST_F(StoreFiles, AreSetAsideWhenDamagedAndLeftAloneWhenLater) {
    open().buyElsewhere("gold");
    removeLog(file);
    writeFile(file, "not a database at all, and long enough to be looked at");
    EXPECT_TRUE(open().purchases().empty());
    EXPECT_THAT(console->lines, ElementsAre(HasSubstr("set aside as store.sqlite.set-aside-1")));

    SqliteDatabase(file, SqliteDatabase::Missing::fails).execute("PRAGMA user_version = 2");
    auto later = open();
    EXPECT_THROW(later.buyElsewhere("gold"), NSError);
    EXPECT_FALSE(fs::exists(file.string() + ".set-aside-2"));
}

TEST_F(StoreFiles, AreNotNeededToSayWhyACatalogueCannotBeRead) {
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

} // namespace
} // namespace corvantile
