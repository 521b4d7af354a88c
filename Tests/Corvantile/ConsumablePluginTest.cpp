#include "Corvantile/Plugin/Products/ConsumablePlugin.hpp"

#include "CorvantileTest/ScriptedStore.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::ConsumablePluginTest {

using State = SKPaymentTransactionState;
using Identifiers = std::vector<std::string>;
using Consumables = ProcessTest;

TEST_F(Consumables, ArePublishedForEveryBatchAndEveryPurchaseIsFinished) {
    auto& store = platform_->store();
    const auto plugin = std::make_shared<ConsumablePlugin>(Identifiers{"gems", "coins"});
    std::vector<Identifiers> told;
    plugin->consumableProducts().subscribe([&](const Identifiers& list) { told.push_back(list); });
    const auto purchased = [&](const char* product) { return store.makeTransaction(product); };
    const auto in = [&](State state) { return store.makeTransaction("gems", state); };
    const struct {
        SKPaymentQueue::Transactions batch;
        Identifiers published;
        std::size_t finished; // so far
    } cases[] = {
        {{purchased("gems"), purchased("year")}, {"gems"}, 2},
        {{purchased("coins"), purchased("gems"), purchased("coins"), purchased("Gems")},
         {"coins", "gems", "coins"},
         6},
        {{in(State::failed), in(State::restored), in(State::deferred), in(State::purchasing)}, {}, 6},
    };
    for (const auto& [batch, published, finished] : cases) {
        told.clear();
        store.deliver(batch);
        platform_->runUntilIdle();
        EXPECT_THAT(told, testing::ElementsAre(published));
        EXPECT_EQ(store.finishes().size(), finished);
    }
}

TEST_F(Consumables, AreIdentifiedByTheBundleAndTheirKey) {
    const ConsumableItem gems("gems", "A bag of gems");
    EXPECT_EQ(gems.identifier(), "com.example.app.gems");
    const auto nameless = TestPlatform::launch(device_, {.bundleIdentifier = ""});
    EXPECT_EQ(gems.identifier(), ".gems");
}

} // namespace corvantile::ConsumablePluginTest
