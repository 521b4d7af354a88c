#include "Corvantile/Plugin/Products/ConsumablePlugin.hpp"

#include "Corvantile/Plugin/Products/ConsumableItem.hpp"
#include "Platform/Store/SKPayment.hpp"
#include "TestPlatform/ScriptedStore.hpp"
#include "Tests/Corvantile/ProcessTest.hpp"

namespace corvantile {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using State = SKPaymentTransactionState;
using Identifiers = std::vector<std::string>;

// A queue beside the default one; it knows what was finished on it.
class OtherQueue final : public SKPaymentQueue {
public:
    std::unique_ptr<PaymentObserverRegistration>
    addTransactionObserver(SKPaymentTransactionObserver&) override {
        return std::make_unique<PaymentObserverRegistration>();
    }
    void addPayment(std::shared_ptr<const SKPayment>) override {}
    void restoreCompletedTransactions() override {}
    void finishTransaction(const SKPaymentTransaction& transaction) override {
        finished.push_back(transaction.payment().productIdentifier());
    }
    [[nodiscard]] Transactions transactions() const override { return {}; }

    Identifiers finished;
};

class Consumables : public ProcessTest {
protected:
    void make(Identifiers consumables) {
        plugin_ = std::make_shared<ConsumablePlugin>(std::move(consumables));
        plugin_->consumableProducts().subscribe([this](const Identifiers& list) { told_.push_back(list); });
    }
    ScriptedStore& store() { return platform_->store(); }

    std::shared_ptr<ConsumablePlugin> plugin_;
    std::vector<Identifiers> told_;
};

TEST_F(Consumables, ArePublishedForEveryBatchAndEveryPurchaseIsFinishedWhereItWasReported) {
    make({"gems", "coins"});
    const auto purchased = [&](const char* product) { return store().makeTransaction(product); };
    const auto in = [&](State state) { return store().makeTransaction("gems", state); };
    const struct {
        SKPaymentQueue::Transactions batch;
        Identifiers published, finished;
    } cases[] = {
        {{purchased("gems"), purchased("year")}, {"gems"}, {"gems", "year"}},
        {{purchased("coins"), purchased("gems"), purchased("coins"), purchased("Gems")},
         {"coins", "gems", "coins"},
         {"coins", "gems", "coins", "Gems"}},
        {{in(State::failed), in(State::restored), in(State::deferred), in(State::purchasing)}, {}, {}},
    };
    for (const auto& [batch, published, finished] : cases) {
        OtherQueue queue;
        told_.clear();
        plugin_->updatedTransactions(queue, batch);
        EXPECT_THAT(told_, ElementsAre(published));
        EXPECT_EQ(queue.finished, finished);
    }
    EXPECT_THAT(store().finishes(), IsEmpty());
}

TEST_F(Consumables, ThatAnEarlierLaunchDidNotFinishArriveAtTheNext) {
    store().deliver({store().makeTransaction("gems")});
    platform_ = TestPlatform::relaunch(std::move(platform_));
    make({});
    EXPECT_THAT(told_, IsEmpty());

    platform_->runUntilIdle();

    EXPECT_THAT(told_, ElementsAre(Identifiers{})); // none of them is known as a consumable
    EXPECT_THAT(store().transactions(), IsEmpty());
}

TEST(ConsumableItems, AreNamedAfterTheBundle) {
    for (const std::string bundle : {"com.example.app", ""}) {
        TestDevice device;
        const auto platform = TestPlatform::launch(device, {.bundleIdentifier = bundle});
        EXPECT_EQ(ConsumableItem("gems", "A few gems").identifier(), bundle + ".gems");
    }
}

} // namespace
} // namespace corvantile
