#include "Tests/CorvantilePlay/GoldenState.hpp"
#include "Tests/CorvantilePlay/EngineFixture.hpp"

namespace corvantile::tool::GoldenStateTest {

using testing::IsSupersetOf;

class GoldenState : public EngineFixture {
protected:
    GoldenState() {
        copyGoldenState(folder().state(), "state-2");
        begin(std::filesystem::path(CORVANTILE_SAMPLE_APP));
        play({"launch", "activate"});
    }
};

TEST_F(GoldenState, KeepsWhatAKilledProcessHadStored) {
    awaitText("DatabasePlugin publishes isLoaded");
    awaitText("IAPReceiptPlugin publishes productCategories");
    const auto launched = events();
    EXPECT_THAT(
        takeTexts("plugin"),
        IsSupersetOf<std::string>(
            {"FirstDatePlugin publishes firstDate: 2026-11-23 00:00:00 +0000",
             "DatabasePlugin publishes setting: Setting(iapPolicy: 8 lines, manageSubscriptionEnabled: "
             "true, reviewAppEnabled: false)"}));
    for (const auto& event : launched) EXPECT_THAT(event.text, Not(HasSubstr("damaged")));

    play({"outbox"});
    EXPECT_THAT(takeTexts("host"),
                IsSupersetOf({HasSubstr("session: sent"), HasSubstr("event t1r2i3: sent"),
                              HasSubstr("subscription 0 USD 200000000000001: sent"),
                              HasSubstr("event t7h8e9 9.99000 USD: sent"), HasSubstr("event o1p2e3: waiting"),
                              HasSubstr("event s4a5l6 4.99000 USD: waiting")}));
    play({"transactions"});
    EXPECT_THAT(takeTexts("store"),
                IsSupersetOf({StartsWith("200000000000001  "), StartsWith("200000000000003  "),
                              StartsWith("200000000000004  ")}));
}

TEST_F(GoldenState, ReportsOnlyWhatIsNew) {
    awaitText("IAPReceiptPlugin publishes productCategories");
    play({"advance 1y", "buy com.example.sampleapp.pro.monthly"});
    awaitText("backend got a subscription");
    EXPECT_THAT(takeTexts("sink"), ElementsAre(StartsWith("backend got trial_conversion_pro"),
                                               HasSubstr("transaction=\"200000000000005\"")));
}

} // namespace corvantile::tool::GoldenStateTest
