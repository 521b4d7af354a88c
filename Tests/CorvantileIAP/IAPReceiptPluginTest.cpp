#include "CorvantileIAP/IAPReceiptPlugin.hpp"

#include "CorvantileIAP/InappHelper.hpp"
#include "CorvantileTest/ScriptedStore.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::IAPReceiptPluginTest {

std::shared_ptr<SKProduct> product(const std::string& identifier) {
    return std::make_shared<SKProduct>(identifier, NSDecimalNumber(1), PriceLocale{});
}

// A receipt with a row each for these products, and one renewal.
std::string receipt(const std::vector<std::string>& products) {
    std::string rows;
    for (const auto& name : products)
        rows += (rows.empty() ? R"({"transaction_id": )" : R"(, {"transaction_id": )") +
                std::to_string(rows.size()) +
                R"(, "original_transaction_id": 1, "purchase_date_ms": 0, "product_id": ")" + name + "\"}";
    return R"({"status": 0, "latest_receipt_info": [)" + rows +
           R"(], "pending_renewal_info": [{"product_id": "pro"}]})";
}

class IAPReceipt : public ProcessTest {
protected:
    void SetUp() override {
        plugin_->productCategories().subscribe([this](const std::vector<ProductCategory>& categories) {
            std::string text;
            for (const auto& [category, sold, records] : categories)
                text += (category.empty() ? sold->productIdentifier() : category) + " " +
                        std::to_string(records.size()) + "; ";
            heard_.push_back(text);
        });
        plugin_->renewals().subscribe([this](const std::vector<RenewalInfo>& renewals) {
            heard_.push_back("renewals " + std::to_string(renewals.size()));
        });
        plugin_->problems().subscribe([this](const std::vector<ReceiptProblem>& problems) {
            for (const auto& problem : problems) heard_.push_back(describe(problem));
        });
        device_.store().setProducts({product("pro"), product("extra")});
        device_.store().setReceipt(receipt({"pro", "pro"}));
    }
    void activate() { plugin_->didBecomeActive(*UIApplication::shared()); }
    std::vector<std::string> heard() {
        platform_->runUntilIdle();
        return std::exchange(heard_, {});
    }
    ScriptedStore& store() { return platform_->store(); }

    std::shared_ptr<IAPReceiptPlugin> plugin_ = std::make_shared<IAPReceiptPlugin>(
        std::vector<IAPReceiptPlugin::Product>{{"pro"}, {"extra", "gold"}});
    std::vector<std::string> heard_;
};

TEST_F(IAPReceipt, IsReadAtEachActivationAndAfterEachBatchWithAPurchase) {
    activate();
    EXPECT_THAT(heard(), ElementsAre("renewals 1", "pro 2; "));
    device_.store().setReceipt(receipt({"pro", "extra", "pro"}));
    activate();
    EXPECT_THAT(heard(), ElementsAre("renewals 1", "pro 2; gold 1; "));
    EXPECT_THAT(store().productRequests(), SizeIs(1)); // all are known by now

    using State = SKPaymentTransactionState;
    for (const auto& [state, requests] :
         {std::pair(State::failed, 2), {State::deferred, 2}, {State::purchased, 3}, {State::restored, 4}}) {
        store().deliver({store().makeTransaction("pro", state)});
        platform_->runUntilIdle();
        EXPECT_EQ(store().receiptRequests(), requests);
    }
}

TEST_F(IAPReceipt, IsPublishedAgainOnlyWhenTheStoreAnswersSomethingElse) {
    device_.store().setProducts({product("pro")}); // the other is asked for each time
    activate();
    EXPECT_THAT(heard(), SizeIs(2));
    activate();
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_THAT(store().productRequests(), SizeIs(2));
    EXPECT_EQ(store().receiptRequests(), 2);

    store().failNextReceipt();
    activate();
    EXPECT_THAT(heard(), ElementsAre(HasSubstr("receipt: ")));
    std::size_t reports = 0;
    plugin_->problems().subscribe([&](const auto& problems) { reports += problems.empty(); });
    activate();
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_GT(reports, 0u) << "the failure is over";
    plugin_->setRecords({}, {});
    EXPECT_THAT(heard(), SizeIs(2));
    activate();
    EXPECT_THAT(heard(), ElementsAre("renewals 1", "pro 2; ")) << "not equal to what came last";
    plugin_->setReceipt(receipt({"pro", "pro"}));
    EXPECT_THAT(heard(), SizeIs(2)) << "the host's own counts each time";
}

TEST_F(IAPReceipt, WaitsForTheProductsAndAsksForThoseThatAreMissing) {
    store().failNextProducts();
    activate();
    EXPECT_THAT(heard(), testing::UnorderedElementsAre("renewals 1", HasSubstr("products: ")));

    device_.store().setProducts({product("extra")});
    activate();
    EXPECT_THAT(heard(), testing::Contains("product \"pro\": unknown, so its transactions (2) are left out"));

    plugin_->setProducts({product("pro"), product("stranger")});
    EXPECT_THAT(heard(), ElementsAre("pro 2; "));
    EXPECT_EQ(store().productRequests().back(), (ProductIdentifiers{"pro", "extra"}));
}

TEST_F(IAPReceipt, ThatTheStoreCannotTellLeavesWhatWasKnown) {
    device_.store().setReceipt(std::nullopt);
    activate();
    EXPECT_THAT(heard(), ElementsAre("renewals 0", ""));
    device_.store().setReceipt(receipt({"pro"}));
    activate();
    heard();
    store().failNextReceipt();
    activate();
    EXPECT_THAT(heard(), ElementsAre(HasSubstr("receipt: ")));
    device_.store().setReceipt(R"({"status": 21005})");
    activate();
    EXPECT_THAT(heard(), ElementsAre("receipt: The store's server could not be reached."));
    device_.store().setReceipt(std::nullopt);
    activate();
    EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(IAPReceipt, OfEachOfSeveralBatchesIsReadUnlessALaterOneIsAnsweredBefore) {
    const auto failure = HasSubstr("products: "); // what was read waits until they are known
    store().failNextProducts();
    store().failNextProducts();
    store().setRequestDelay(std::chrono::seconds(2));
    store().deliver({store().makeTransaction("pro")});
    platform_->runUntilIdle();
    device_.store().setReceipt(
        R"({"status": 0, "latest_receipt_info": [{"transaction_id": 7, )"
        R"("original_transaction_id": 7, "purchase_date_ms": 0, "product_id": "extra"}]})");
    store().deliver({store().makeTransaction("extra")});
    platform_->advance(std::chrono::seconds(3));
    EXPECT_THAT(heard(), testing::UnorderedElementsAre("renewals 1", "renewals 0", failure));
    plugin_->setProducts({product("pro"), product("extra")});
    EXPECT_THAT(heard(), ElementsAre("pro 2; ", "gold 1; "));

    store().deliver({store().makeTransaction("extra")});
    platform_->runUntilIdle();
    store().setRequestDelay(std::chrono::seconds(1));
    device_.store().setReceipt(receipt({"pro"}));
    store().deliver({store().makeTransaction("pro")});
    platform_->advance(std::chrono::seconds(3));
    EXPECT_THAT(heard(), ElementsAre("renewals 1", "pro 1; "));
}

TEST_F(IAPReceipt, ComesFromTheHostToo) {
    plugin_->setProducts({product("pro")});
    plugin_->setReceipt(receipt({"pro", "extra", "gone", "gone"}));
    plugin_->setRecords({{"own", product("x"), {ReceiptInfo()}}}, {});
    plugin_->setReceipt("{");
    EXPECT_THAT(heard(),
                ElementsAre("renewals 1", "product \"extra\": unknown, so its transactions (1) are left out",
                            "product \"gone\": unknown, so its transactions (2) are left out", "pro 1; ",
                            "renewals 0", "own 1; ", "receipt: The receipt is no JSON."));
    EXPECT_THAT(lines(), IsEmpty());

    plugin_->setProducts({product("extra")}); // of no concern to the host's own records
    InappHelper::setDebug(true);
    plugin_->setReceipt("[]");
    EXPECT_THAT(heard(), SizeIs(1));
    EXPECT_THAT(lines(), ElementsAre("Receipt --- receipt: The receipt is no JSON object."));
}

TEST_F(IAPReceipt, IsNotWaitedForAfterResigningOrTheEnd) {
    store().setRequestsHanging(true);
    activate();
    platform_->runUntilIdle();
    EXPECT_EQ(store().requestsUnderWay(), 2);
    activate(); // takes the place of the first
    EXPECT_EQ(store().requestsUnderWay(), 2);
    plugin_->willResignActive(*UIApplication::shared());
    platform_->runUntilIdle();
    EXPECT_EQ(store().requestsUnderWay(), 0);

    store().deliver({store().makeTransaction("pro")}); // its receipt may be the only one that shows it
    platform_->runUntilIdle();
    plugin_->willResignActive(*UIApplication::shared());
    EXPECT_EQ(store().requestsUnderWay(), 1);

    activate();
    plugin_->setReceipt(receipt({"pro"}));
    plugin_.reset();
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_EQ(store().requestsUnderWay(), 0);
}

} // namespace corvantile::IAPReceiptPluginTest
