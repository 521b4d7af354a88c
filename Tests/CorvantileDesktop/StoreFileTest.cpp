#include "CorvantileDesktop/Store/detail/StoreFile.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/Foundation/detail/SystemClock.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "Tests/CorvantileDesktop/StoreFiles.hpp"
#include "Tests/CorvantilePlatform/AtOnce.hpp"

namespace corvantile::StoreFileTest {

LocalStore openStore(const std::filesystem::path& folder, bool hasPast = false) {
    Catalogue catalogue;
    catalogue.add({.identifier = "gold", .price = NSDecimalNumber(1)});
    auto storage = std::make_shared<StoreFile>(StoreFileOptions{.file = folder / "store.sqlite",
                                                                .console = {},
                                                                .inBackground = [](const auto&) {},
                                                                .hasPast = hasPast});
    storage->beginCounters();
    return LocalStore({.catalogue = std::move(catalogue),
                       .clock = std::make_shared<SystemClock>(),
                       .storage = std::move(storage)});
}

// The keychain's markers of what a lost store had sold would silence purchases of the same numbers.
TEST(StoreFiles, ThatAreBegunAnewUseNoNumberTwice) {
    const TemporaryFolder folder;
    const auto store = folder.path() / "store.sqlite", counters = folder.path() / "store-counters";
    const auto isFromTheStart = [&](bool hasPast) {
        auto opened = openStore(folder.path(), hasPast);
        opened.buyElsewhere("gold");
        return opened.purchases().front().identifier == "200000000000001";
    };
    const auto lose = [&] {
        for (const auto* const suffix : {"", "-wal", "-shm"}) std::filesystem::remove(beside(store, suffix));
    };
    ASSERT_TRUE(isFromTheStart(false));
    std::string last = "200000000000001";
    std::int64_t lastPlace = 1;
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"an earlier version's, then no store",
         [&] {
             std::filesystem::remove(counters);
             static_cast<void>(openStore(folder.path()).now());
             lose();
         }},
        {"no store", lose},
        {"no store again", lose},
        {"a damaged store", [&] { lose(), writeFile(store, "none"); }},
        {"a damaged store and no numbers",
         [&] {
             lose();
             writeFile(store, "none");
             std::filesystem::remove(counters);
         }},
        {"no store and wrong numbers",
         [&] {
             lose();
             writeFile(counters, "CVSN1\n1 200000000000001\n1 200000000000009\n");
         }},
        {"no settings", [&] { alter(store, "DELETE FROM records"); }},
        {"a folder for numbers, then no store",
         [&] {
             std::filesystem::remove(counters);
             std::filesystem::create_directories(counters / "inside");
             static_cast<void>(openStore(folder.path()).now());
             lose();
         }},
    };
    for (const auto& [what, damage] : cases) {
        SCOPED_TRACE(what);
        damage();
        auto opened = openStore(folder.path());
        const auto purchases = opened.purchases().size(), transactions = opened.transactions().size();
        for (int bought = 0; bought < 3; ++bought) opened.buyElsewhere("gold");
        const auto latest = opened.purchases().back();
        EXPECT_GT(opened.purchases()[purchases].identifier, last);
        EXPECT_GT(opened.transactions()[transactions].number, lastPlace);
        EXPECT_EQ(latest.identifier.size(), last.size()); // they are compared as texts
        last = latest.identifier;
        lastPlace = opened.transactions().back().number;
    }
    std::filesystem::remove_all(folder.path());
    EXPECT_FALSE(isFromTheStart(true));
}

// An app that used its keychain and ended before it bought anything has lost no purchases.
TEST(StoreFiles, ThatHaveSoldNothingBeginWithTheFirstNumber) {
    for (const bool hasBeenOpened : {false, true}) {
        const TemporaryFolder folder;
        const auto state = folder.path() / "state"; // not made yet
        {
            auto opened = openStore(state);
            if (hasBeenOpened) opened.setClockRate(2); // a commit that uses no number
        }
        auto opened = openStore(state, true);
        opened.buyElsewhere("gold");
        EXPECT_EQ(opened.purchases().front().identifier, "200000000000001");
    }
}

TEST(StoreFiles, AreSharedByProcessesThatBuyAtOnceAndSeeEachOthersPurchases) {
    const TemporaryFolder folder;
    auto one = openStore(folder.path());
    auto other = openStore(folder.path());

    std::set<std::int64_t> payments[2];
    atOnce(2, [&](int number) {
        auto& store = number == 0 ? one : other;
        for (int round = 0; round < 50; ++round) {
            store.buyElsewhere("gold");
            payments[number].insert(store.addPayment("gold", 1));
        }
    });
    for (const auto payment : payments[0]) EXPECT_TRUE(one.claim(payment) && !other.claim(payment));
    for (const auto payment : payments[1]) EXPECT_TRUE(other.claim(payment) && !one.claim(payment));

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
