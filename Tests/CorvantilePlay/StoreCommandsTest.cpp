#include "Tests/CorvantilePlay/EngineFixture.hpp"
#include "Tests/CorvantilePlay/SampleCatalogue.hpp"

namespace corvantile::tool::StoreCommandsTest {

constexpr const char* shopApp = R"({
    "bundleIdentifier": "com.example.app",
    "name": "App",
    "plugins": [{"kind": "AnalyticPlugin"}, {"kind": "FirstDatePlugin"},
                {"kind": "SKProductRequestPlugin", "configuration": {"productIdentifiers": ["app.pro"]}},
                {"kind": "SKProductPromoPlugin"},
                {"kind": "ConsumablePlugin", "configuration": {"consumableProductIDs": ["app.coins"]}},
                {"kind": "IAPReceiptPlugin", "configuration": {"products": [
                    {"identifier": "app.pro", "category": "pro"}, {"identifier": "app.coins"}]}},
                {"kind": "IAPReceiptTrackingPlugin"}],
    "sinks": [{"kind": "RecordingSink", "name": "backend"}],
    "store": {"catalogue": "Catalogue.storekit"}
})";

class StoreCommands : public EngineFixture {
protected:
    StoreCommands() {
        folder().write("Catalogue.storekit", sampleCatalogue);
        begin(shopApp);
        play({"launch", "activate"});
        takeTexts("sink");
    }
};

TEST_F(StoreCommands, ReportASubscriptionOnceAndItsConversion) {
    play({"buy pro"});
    awaitText("backend got total_subscription");
    EXPECT_THAT(takeTexts("sink"),
                ElementsAre(StartsWith("backend got trial_subscribe_pro "), HasSubstr(" price=0 "),
                            StartsWith("backend got total_subscription ")));

    play({"relaunch", "activate"});
    EXPECT_THAT(takeTexts("sink"), IsEmpty());

    play({"advance 8d"});
    awaitText("backend got a subscription");
    EXPECT_THAT(takeTexts("sink"),
                ElementsAre(StartsWith("backend got trial_conversion_pro "), HasSubstr(" price=4.99 ")));
    play({"store"});
    EXPECT_THAT(takeTexts("store"), Contains(StartsWith("subscription: app.pro renews at ")));
}

TEST_F(StoreCommands, ShowWhatBecomesOfAPayment) {
    const std::pair<Texts, const char*> cases[] = {
        {{"fail coins cancelled", "buy coins"},
         "the queue reports app.coins failed: The customer has cancelled the payment."},
        {{"defer coins", "buy coins"}, "the queue reports app.coins deferred"},
        {{"approve coins"}, "the queue reports app.coins purchased ("},
        {{"defer coins", "buy coins 2", "decline coins"}, "the queue reports app.coins failed x 2: Whoever"},
        {{"buy themes", "restore"}, "the queue reports app.themes restored ("},
    };
    for (const auto& [lines, last] : cases) {
        takeTexts("store");
        play(lines);
        awaitText(last);
    }
    play({"transactions"});
    EXPECT_THAT(takeTexts("store"), Contains(testing::AllOf(StartsWith("-"), HasSubstr("app.coins x 2"),
                                                            HasSubstr("failed: Whoever"))));
}

TEST_F(StoreCommands, PlayAPromotedPurchaseAndAConsumable) {
    play({"promote coins"});
    awaitText("SKProductPromoPlugin publishes isFinished: true");

    EXPECT_THAT(takeTexts("plugin"),
                testing::IsSupersetOf({"SKProductPromoPlugin publishes isProductReady: true",
                                       "ConsumablePlugin publishes consumableProducts: app.coins"}));
}

TEST_F(StoreCommands, LetTheCatalogueFailAndLoad) {
    play({"resign", "store offline"});
    takeTexts("plugin");
    play({"activate"});
    awaitText("SKProductRequestPlugin publishes error: The store cannot be reached.");
    play({"resign", "store online", "activate"});
    awaitText("SKProductRequestPlugin publishes products: app.pro 4.99 USD");
}

TEST_F(StoreCommands, HandInAReceiptAndConfirmAPurchase) {
    const auto receipt = folder().write("receipt.json", R"({"status": 0, "latest_receipt_info": [
        {"transaction_id": "7", "original_transaction_id": "7", "product_id": "app.coins",
         "purchase_date_ms": "4102444800000"}]})");
    play({"receipts '" + receipt.string() + "'", "validated coins server=ok"});
    awaitText("backend got ostrel_in_app_purchase");
    awaitText("backend got total_subscription");
}

TEST_F(StoreCommands, RefuseWhatTheStoreCannotDo) {
    expectErrors({
        {"buy pr", "there is no product \"pr\"; known: app.coins, app.themes, app.pro"},
        {"buy coins none", "expected how many"},
        {"fail coins perhaps", "there is no reason \"perhaps\"; known: cancelled"},
        {"approve coins", "No payment for app.coins waits"},
        {"billing coins failing", "app.coins does not renew"},
        {"advance 3x", "expected a duration, such as 31d"},
        {"receipts /nowhere", "/nowhere: expected a receipt"},
        {"validated coin", "there is no product \"coin\""},
    });
}

TEST_F(StoreCommands, WarnOfConsumablesInTwoListsAtLaunch) {
    const std::string app = shopApp;
    const std::string consumables =
        R"({"kind": "ConsumablePlugin", "configuration": {"consumableProductIDs": ["app.coins"]}},)";
    auto recordsFirst = app, apart = app;
    recordsFirst.replace(app.find(consumables), consumables.size(), "");
    recordsFirst.insert(recordsFirst.find(R"({"kind": "IAPReceiptTrackingPlugin")"), consumables);
    apart.replace(app.find(R"(, {"identifier": "app.coins"})"), 29, "");
    const auto warnings = [&](const std::string& description) {
        begin(description.c_str());
        play({"launch"});
        auto texts = takeTexts("host");
        std::erase_if(texts, [](const auto& text) { return !text.starts_with("app.coins is in the lists"); });
        return texts;
    };
    EXPECT_THAT(warnings(app), ElementsAre(HasSubstr("here no purchase of it is reported")));
    EXPECT_THAT(warnings(recordsFirst), ElementsAre(HasSubstr("here its purchases are reported")));
    EXPECT_THAT(warnings(apart), IsEmpty());
}

} // namespace corvantile::tool::StoreCommandsTest
