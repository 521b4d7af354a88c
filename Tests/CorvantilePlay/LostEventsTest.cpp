#include "CorvantilePlay/detail/Session/MarkedTransactions.hpp"
#include "Tests/CorvantilePlay/EngineFixture.hpp"
#include "Tests/CorvantilePlay/SampleCatalogue.hpp"

namespace corvantile::tool::LostEventsTest {

// An app that sells, and whose sinks are registered by command: what a host forgets.
constexpr const char* forgetfulApp = R"({
    "bundleIdentifier": "com.example.app",
    "name": "App",
    "plugins": [{"kind": "DebugPlugin"}, {"kind": "AnalyticPlugin"}, {"kind": "FirstDatePlugin"},
                {"kind": "SKProductRequestPlugin", "configuration": {"productIdentifiers": ["app.pro"]}},
                {"kind": "IAPReceiptPlugin", "configuration": {"products": [
                    {"identifier": "app.pro", "category": "pro"}, {"identifier": "app.themes"}]}},
                {"kind": "IAPReceiptTrackingPlugin"}],
    "sinks": [{"kind": "RecordingSink", "name": "picky", "register": "command",
               "ignore": ["subscribe_app.themes", "total_subscription"]},
              {"kind": "RecordingSink", "name": "backend", "register": "command"}],
    "store": {"catalogue": "Catalogue.storekit"}
})";

class LostEvents : public EngineFixture {
protected:
    LostEvents() {
        folder().write("Catalogue.storekit", sampleCatalogue);
        begin(forgetfulApp);
        play({"launch"});
    }
};

TEST_F(LostEvents, ReportsWhatAForgottenSinkCosts) {
    play({"activate", "buy pro"});

    EXPECT_THAT(
        takeTexts("router"),
        ElementsAre(
            "no sink is registered: the router keeps trial_subscribe_pro, and nothing will bring it back",
            "no sink is registered: the subscription report of 200000000000001 is lost",
            "no sink is registered: the router keeps total_subscription, and nothing will bring it back",
            "transaction 200000000000001 is marked as reported, but no sink got its events: nothing reports "
            "it later"));

    play({"register backend", "resign", "activate"});
    EXPECT_THAT(takeTexts("sink"), IsEmpty());
}

TEST_F(LostEvents, AreNoneWhenTheSampleAppSellsForTheFirstTime) {
    begin(std::filesystem::path(CORVANTILE_SAMPLE_APP));
    play({"launch", "activate", "buy pro.monthly"});

    const auto happened = events();
    EXPECT_THAT(takeTexts("router"), IsEmpty());
    EXPECT_THAT(happened,
                Contains(testing::Field(&PlayEvent::text, StartsWith("backend got trial_subscribe_pro "))));
}

TEST_F(LostEvents, ReportsATransactionOnlyIfNoSinkGotAnyOfItsEvents) {
    play({"register picky", "activate", "buy themes"});
    EXPECT_THAT(takeTexts("router"),
                ElementsAre("no sink got subscribe_app.themes", "no sink got total_subscription",
                            AllOf(StartsWith("transaction "), HasSubstr("no sink got its events"))));

    play({"buy pro"}); // its subscription report passes every filter
    EXPECT_THAT(takeTexts("router"), ElementsAre("no sink got total_subscription"));

    play({"register backend", "validated app.pro"});
    EXPECT_THAT(takeTexts("router"), IsEmpty());
}

TEST_F(LostEvents, FollowsATransactionWhoseEventsAreSavedWithItsMarker) {
    std::string app = forgetfulApp;
    app.insert(app.find("TrackingPlugin\"") + 15, R"(, "configuration": {"atLeastOnce": true})");
    begin(app.c_str());
    play({"launch", "activate", "buy themes"});
    EXPECT_THAT(takeTexts("router"),
                Contains(AllOf(StartsWith("transaction "), HasSubstr("no sink got its events"))));
}

TEST_F(LostEvents, ReportsALaterPeriodThatIsOverBeforeItIsSeen) {
    const auto receipt = folder().write("receipt.json", R"({"status": 0, "latest_receipt_info": [
        {"transaction_id": "8", "original_transaction_id": "7", "product_id": "app.pro",
         "purchase_date_ms": "4102444800000", "expires_date_ms": "1000"}]})");
    play({"register backend", "activate", "receipts '" + receipt.string() + "'"});

    EXPECT_THAT(takeTexts("router"), ElementsAre("transaction 8 is marked as reported, but no event was sent "
                                                 "for it: nothing reports it later"));
}

TEST_F(LostEvents, CountsEventsOfTheFrameworkAndThoseOfADryRun) {
    play({"lock", "activate"});
    EXPECT_THAT(takeTexts("router"),
                Contains(StartsWith("no sink is registered: the router keeps locksmith_create_firstdate")));

    play({"unlock", "relaunch dry-run", "register backend", "activate", "track open"});
    EXPECT_THAT(takeTexts("router"), ElementsAre("no sink got open"));
}

TEST_F(LostEvents, KeepsTheTransactionsOfThreadsApart) {
    std::vector<PlayEvent> told;
    Reporter reporter([&](const PlayEvent& event) { told.push_back(event); });
    {
        MarkedTransactions transactions(reporter);
        transactions.begin("1");
        std::thread([&] {
            transactions.begin("2");
            transactions.addEvent(true);
        }).join();
        transactions.addEvent(false);
        told.clear();

        transactions.begin("validated_3"); // the thread has gone on: 1 has no more events
        EXPECT_THAT(told.front().text, HasSubstr("transaction 1 is marked as reported, but no sink"));
        told.clear();
    }
    ASSERT_EQ(told.size(), 1U);
    EXPECT_THAT(told.front().text, HasSubstr("the validated purchase 3 is marked as reported, but no event"));
}

} // namespace corvantile::tool::LostEventsTest
