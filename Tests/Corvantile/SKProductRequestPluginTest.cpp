#include "Corvantile/Plugin/Products/SKProductRequestPlugin.hpp"
#include "Corvantile/Plugin/Products/detail/RequestSlot.hpp"

#include "Corvantile/Corvantile.hpp"
#include "CorvantileTest/ForEachSeed.hpp"
#include "CorvantileTest/ScriptedStore.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::SKProductRequestPluginTest {

using Trace = std::vector<std::string>;

std::string listText(const StoreRequests::Products& products) {
    std::string text = "products";
    for (const auto& product : products) text.append(" ").append(product->productIdentifier());
    return text;
}

// A store and the plug-in that asks it.
struct Catalogue {
    explicit Catalogue(std::uint64_t seed = 0) : platform(TestPlatform::launch(device, {.seed = seed})) {
        plugin->products().subscribe([this](const auto& products) { note(listText(products)); });
        plugin->error().subscribe(
            [this](const std::exception_ptr& error) { note(error ? "error" : "no error"); });
        plugin->isLoading().subscribe([this](bool isLoading) { loading.push_back(isLoading); });
    }

    ScriptedStore& store() { return platform->store(); }
    void sell() {
        device.store().setProducts({std::make_shared<SKProduct>("gold", NSDecimalNumber(), PriceLocale{})});
    }
    void failNext(int count) {
        for (int i = 0; i < count; ++i) store().failNextProducts();
    }
    void activate() { plugin->didBecomeActive(*UIApplication::shared()); }
    void resign() { plugin->willResignActive(*UIApplication::shared()); }
    // How often the store is asked until nothing is left to run.
    std::size_t requests() {
        platform->runUntilIdle();
        const auto count = store().productRequests().size();
        return count - std::exchange(seenRequests, count);
    }
    void note(std::string answer) {
        EXPECT_FALSE(DispatchQueue::main()->isCurrent()); // it is for screens to move over to main
        trace.push_back(std::move(answer));
    }
    Trace news() { return std::exchange(trace, {}); }
    void afterTurns(int turns, std::function<void()> act) {
        DispatchQueue::main()->async([this, turns, next = std::move(act)] {
            if (turns == 0) return next();
            afterTurns(turns - 1, next);
        });
    }

    TestDevice device;
    std::unique_ptr<TestPlatform> platform;
    std::shared_ptr<SKProductRequestPlugin> plugin =
        std::make_shared<SKProductRequestPlugin>(std::vector<std::string>{"gold", "gold", "silver"});
    Trace trace;
    std::vector<bool> loading;
    std::size_t seenRequests = 0;
};

TEST(ProductCatalogue, IsLoadedAtActivationAndReplaysOnlyTheLatestList) {
    Catalogue catalogue;
    catalogue.sell();
    catalogue.failNext(1);
    Corvantile::setDebug(true);
    catalogue.activate();
    EXPECT_THAT(catalogue.platform->console().lines(),
                ElementsAre(EndsWith("SKProductRequestPlugin:41 (loadSKProducts()) -> subscribed"),
                            EndsWith("SKProductRequestPlugin:76 (reload()) -> subscribed")));

    EXPECT_EQ(catalogue.requests(), 2u);
    EXPECT_EQ(catalogue.store().productRequests().front(), (ProductIdentifiers{"gold", "silver"}));
    EXPECT_THAT(catalogue.news(), ElementsAre("error", "products", "products gold", "no error"));
    EXPECT_THAT(catalogue.loading, ElementsAre(false, true, false));
    Trace late;
    catalogue.plugin->products().subscribe([&](const auto& list) { late.push_back(listText(list)); });
    EXPECT_THAT(late, ElementsAre("products gold"));
}

TEST(ProductCatalogue, IsAskedForFourTimesFromAColdStartWithoutProductsAndThreeTimesAfterThat) {
    for (const int failures : {0, 10}) {
        Catalogue catalogue; // that sells nothing
        catalogue.failNext(failures);
        catalogue.activate();
        EXPECT_EQ(catalogue.requests(), 4u);
        EXPECT_THAT(catalogue.news(), SizeIs(8));
        catalogue.resign();
        catalogue.activate(); // the list of before is replayed to the watch
        EXPECT_EQ(catalogue.requests(), 3u);
    }
}

TEST(ProductCatalogue, CountsAListWithProductsAmongTheThreeAnswersThatAWatchLooksAt) {
    Catalogue catalogue;
    catalogue.sell();
    catalogue.activate();
    EXPECT_EQ(catalogue.requests(), 1u);
    catalogue.failNext(10);
    catalogue.plugin->reload();
    EXPECT_EQ(catalogue.requests(), 3u); // two empty lists are followed by another request, the third is not
}

TEST(ProductCatalogue, KeepsLoadingWhenActivatedAgainAndStopsWhenResignedOrGone) {
    Catalogue catalogue;
    catalogue.store().setRequestsHanging(true);
    for (int i = 0; i < 2; ++i) {
        catalogue.activate();
        EXPECT_EQ(catalogue.requests(), 1u);
    }
    EXPECT_EQ(catalogue.store().requestsUnderWay(), 1);
    EXPECT_THAT(catalogue.loading, ElementsAre(false, true));

    catalogue.resign();
    EXPECT_EQ(catalogue.requests(), 0u);
    EXPECT_EQ(catalogue.store().requestsUnderWay(), 0);
    EXPECT_THAT(catalogue.loading, ElementsAre(false, true, false));
    EXPECT_THAT(catalogue.news(), IsEmpty());

    catalogue.store().setRequestsHanging(false);
    catalogue.plugin->reload(); // the replaced watch goes on
    EXPECT_EQ(catalogue.requests(), 4u);

    catalogue.store().setRequestsHanging(true);
    catalogue.plugin->reload();
    EXPECT_EQ(catalogue.requests(), 1u);
    catalogue.plugin.reset();
    catalogue.platform->runUntilIdle();
    EXPECT_EQ(catalogue.store().requestsUnderWay(), 0);
}

TEST(ProductCatalogue, PublishesNothingWhileResignedAndLoadsAtTheNextActivation) {
    const auto play = [](std::uint64_t seed) {
        Catalogue catalogue(seed);
        catalogue.failNext(3);
        catalogue.sell();
        catalogue.activate();
        catalogue.afterTurns(static_cast<int>(seed % 9), [&] {
            catalogue.resign();
            catalogue.afterTurns(2, [&, published = catalogue.trace.size()] {
                EXPECT_EQ(catalogue.trace.size(), published);
                catalogue.activate();
            });
        });
        catalogue.platform->runUntilIdle();
        ASSERT_FALSE(catalogue.trace.empty());
        EXPECT_EQ(catalogue.trace.back(), "no error");
        EXPECT_FALSE(catalogue.loading.back());
        EXPECT_EQ(catalogue.store().requestsUnderWay(), 0);
    };
    forEachSeed(400, play, &testing::Test::HasFailure);
}

TEST(RequestSlot, GoesByWhatBeganLastAndNotByWhoseHandleComesFirst) {
    RequestSlot slot;
    const auto handle = [] { return rx::Disposable::create([] {}); };
    const auto slow = handle(), quick = handle(), cancelled = handle();
    const auto watch = slot.beginWatch(), over = slot.beginWatch();
    slot.endWatch();
    const auto slowTurn = slot.beginRequest(), quickTurn = slot.beginRequest(watch);
    EXPECT_EQ(slot.beginRequest(over), std::nullopt);
    slot.keep(*quickTurn, quick);
    slot.keep(*slowTurn, slow);
    EXPECT_TRUE(slow.isDisposed());
    EXPECT_FALSE(quick.isDisposed());

    const auto lateTurn = slot.beginRequest();
    slot.cancelRequest();
    slot.keep(*lateTurn, cancelled);
    EXPECT_TRUE(quick.isDisposed() && cancelled.isDisposed());
}

} // namespace corvantile::SKProductRequestPluginTest
