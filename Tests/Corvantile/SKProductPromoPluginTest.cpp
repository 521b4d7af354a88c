#include "Corvantile/Plugin/Products/SKProductPromoPlugin.hpp"

#include "CorvantileTest/ScriptedStore.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::SKProductPromoPluginTest {

using State = SKPaymentTransactionState;

class Promotion : public ProcessTest {
protected:
    Promotion() {
        listen();
        EXPECT_TRUE(plugin_->didFinishLaunchingWithOptions(*UIApplication::shared(), {}));
        platform_->runUntilIdle();
    }

    void listen() {
        plugin_->isProductReady().subscribe([this](bool) { trace_.push_back("ready " + held()); });
        plugin_->isFinished().subscribe([this](bool) { trace_.push_back("finished " + held()); });
    }
    ScriptedStore& store() { return platform_->store(); }
    std::string held() const {
        const auto name = [](const auto& it) { return it ? it->productIdentifier() : "nothing"; };
        const auto product = name(plugin_->product()), paid = name(plugin_->payment());
        return product == paid ? product : product + " paid as " + paid;
    }
    // The payment stays open: batches are the test's.
    void promote(const std::string& product) {
        store().answerNextPayment(State::purchasing);
        store().promote(std::make_shared<SKProduct>(product, NSDecimalNumber(), PriceLocale{}));
        platform_->runUntilIdle();
    }
    void deliver(SKPaymentQueue::Transactions batch) {
        store().deliver(std::move(batch));
        platform_->runUntilIdle();
    }
    auto make(const std::string& product, State state = State::purchased) {
        return store().makeTransaction(product, state);
    }
    std::vector<std::string> news() { return std::exchange(trace_, {}); }

    std::shared_ptr<SKProductPromoPlugin> plugin_ = std::make_shared<SKProductPromoPlugin>();
    std::vector<std::string> trace_;
};

TEST_F(Promotion, HoldsTheLatestProductAndLetsTheStoreGoOn) {
    deliver({make("gold")});
    EXPECT_THAT(store().finishes(), IsEmpty());

    promote("silver");
    promote("gold");

    EXPECT_THAT(news(), ElementsAre("ready silver", "ready gold"));
    EXPECT_EQ(store().transactions().size(), 3u); // the two payments were added
    listen();
    EXPECT_THAT(news(), ElementsAre("ready gold")) << "whoever comes late hears the latest";
}

TEST_F(Promotion, ForgetsWhatWasPurchasedBeforeItSignalsAndKeepsWhatFailed) {
    promote("gold");
    deliver({make("gold", State::failed), make("gold")});
    EXPECT_THAT(news(), ElementsAre("ready gold", "finished gold"));

    deliver({make("gold"), make("gold", State::failed)});
    EXPECT_THAT(news(), ElementsAre("finished nothing"));
    EXPECT_EQ(store().finishes().size(), 4u);
    listen();
    EXPECT_THAT(news(), ElementsAre("ready nothing", "finished nothing"));
}

TEST_F(Promotion, LeavesABatchThatHoldsAnythingElseToOthers) {
    promote("gold");
    news();
    for (const auto& other : {make("silver"), make("gold", State::purchasing), make("gold", State::restored),
                              make("gold", State::deferred), make("Gold"), make("silver", State::failed),
                              make("gold", static_cast<State>(99))}) {
        deliver({make("gold"), other});
        deliver({other});
    }
    EXPECT_THAT(news(), IsEmpty());
    EXPECT_THAT(store().finishes(), IsEmpty());
    EXPECT_EQ(held(), "gold");
}

TEST_F(Promotion, LogsErrorsAndEachTransactionThatHasAnIdentifier) {
    promote("gold");
    const auto bare = [payment = plugin_->payment()](State state, std::optional<std::string> identifier,
                                                     std::exception_ptr error = {}) {
        return std::make_shared<SKPaymentTransaction>(
            SKPaymentTransaction::Facts{payment, state, std::move(identifier), {}, std::move(error)});
    };
    const auto error = std::make_exception_ptr(NSError("D", 7));
    deliver({bare(State::failed, {}, error), bare(State::failed, "1", error), bare(State::purchased, "\"2\""),
             bare(State::purchased, {})});

    EXPECT_THAT(lines(), ElementsAre(describe(error), describe(error), "\"Transaction (1) is failed.\"",
                                     "\"Transaction (\\\"2\\\") is purchased.\""));
}

} // namespace corvantile::SKProductPromoPluginTest
