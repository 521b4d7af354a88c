#include "Tests/CorvantilePlay/EngineFixture.hpp"
#include "Tests/CorvantilePlay/GoldenState.hpp"

namespace corvantile::tool::StorageCommandsTest {

constexpr const char* goldenApp = R"({
    "bundleIdentifier": "com.example.golden",
    "name": "App",
    "plugins": [{"kind": "AnalyticPlugin"}, {"kind": "UserPreference"}, {"kind": "DatabasePlugin"},
                {"kind": "FirstDatePlugin"}]
})";

constexpr const char* firstDate = "FirstDatePlugin publishes firstDate: 2026-11-23 00:00:00 +0000";

class StorageCommands : public EngineFixture {
protected:
    StorageCommands() { begin(goldenApp); }

    Texts awaitRecords() {
        awaitText("DatabasePlugin publishes isLoaded");
        return takeTexts("plugin");
    }
};

TEST_F(StorageCommands, WorkOnWhatAnEarlierVersionStored) {
    copyGoldenState(folder().state());
    play({"launch", "activate"});

    EXPECT_THAT(awaitRecords(), ElementsAre(firstDate, "UserPreference publishes isLoaded: true",
                                            "DatabasePlugin publishes application: "
                                            "Application(updatedTime: 2026-11-23 00:37:22 +0000)",
                                            "DatabasePlugin publishes setting: Setting(iapPolicy: 2 lines, "
                                            "manageSubscriptionEnabled: true, reviewAppEnabled: false)",
                                            "DatabasePlugin publishes isLoaded: true"));

    play({"setting reviewAppEnabled=true iapPolicy='[\"a\"]'", "reload", "reset"});
    EXPECT_THAT(takeTexts("plugin"), ElementsAre(HasSubstr("iapPolicy: 1 lines, manageSubscriptionEnabled: "
                                                           "true, reviewAppEnabled: true"),
                                                 HasSubstr("application: Application(updatedTime: 2026-11-23 "
                                                           "00:37:22"),
                                                 StartsWith("DatabasePlugin publishes application: ")));

    play({"delete Setting", "delete appconfig_Setting", "setting reviewAppEnabled=false"});
    EXPECT_THAT(takeTexts("host"),
                ElementsAre("no stored name begins with Setting",
                            "deletes appconfig_Setting_2F7B6BDA-AEED-4BA3-9DFE-0C3AEDDFC5CB",
                            "updates the setting: reviewAppEnabled=false",
                            StartsWith("nothing is published: ")));
}

TEST_F(StorageCommands, AReinstallDeletesWhatGoesWithTheAppAndNothingElse) {
    copyGoldenState(folder().state());
    for (const auto* const name : {"notes", "receipt", "receipt.json", "store.sqlite"})
        folder().write(std::string("state/") + name, "");
    play({"launch"});
    takeTexts("host");

    play({"reinstall"});

    EXPECT_THAT(takeTexts("host"),
                ElementsAre("kills App",
                            "reinstalls App: deletes receipt, user-defaults.sqlite, vendor-identifier, "
                            "vendor-identifier.copy; what stays: keychain, notes, receipt.json, "
                            "store.sqlite"));
    play({"launch", "activate"});
    EXPECT_THAT(takeTexts("plugin"), ElementsAre(firstDate));
}

TEST_F(StorageCommands, ALockedKeychainStaysSoUntilUnlock) {
    copyGoldenState(folder().state());
    EXPECT_EQ(shown({"lock", "launch", "relaunch", "activate", "firstdate"}),
              "no first date is published yet: activate does it");
    EXPECT_THAT(takeTexts("console"), Contains(HasSubstr("cannot be read and counts as absent")));

    EXPECT_EQ(shown({"unlock", "resign", "activate", "firstdate"}),
              "the first date is 2026-11-23 00:00:00 +0000");
}

TEST_F(StorageCommands, ExplainWhatTheyCannotDo) {
    EXPECT_THAT(errorOf("reset"), HasSubstr("the app does not run"));
    play({"launch"});
    EXPECT_THAT(errorOf("setting reviewAppEnabled=false"), HasSubstr("no setting to change yet"));
    EXPECT_THAT(errorOf("delete"), HasSubstr("there is no user whose records could be deleted"));
    EXPECT_THAT(shown({"reset"}), StartsWith("that waits for the first record"));
    awaitRecords();
    expectErrors({
        {"setting {}", "expected KEY=VALUE, such as reviewAppEnabled=false"},
        {"setting reviewApp=true", "did you mean reviewAppEnabled?"},
        {"setting reviewAppEnabled=yes", "expected true or false, but found \"yes\""},
        {"setting iapPolicy='[1]'", "expected a JSON list of texts, but found [1]"},
        {"setting iapPolicy=5", "expected a text, in quotes if need be"},
    });
}

} // namespace corvantile::tool::StorageCommandsTest
