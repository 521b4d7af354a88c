#include "CorvantilePlatform/Platform.hpp"
#include "Tests/CorvantilePlay/EngineFixture.hpp"

namespace corvantile::tool::EngineTest {

// An app with a console and a recording sink, neither of which is registered at launch.
constexpr const char* sampleApp = R"({
    "bundleIdentifier": "com.example.app",
    "name": "App",
    "plugins": [{"kind": "DebugPlugin"}, {"kind": "AnalyticPlugin"}],
    "sinks": [{"kind": "ConsoleComponent", "name": "console", "register": "command"},
              {"kind": "RecordingSink", "name": "backend", "register": "command", "ignore": ["quiet"]}]
})";

class EngineTest : public EngineFixture {
protected:
    EngineTest() { begin(sampleApp); }
};

TEST_F(EngineTest, LeadsAnAppThroughItsLife) {
    play({"launch", "activate", "resign", "background", "foreground", "activate", "resign", "terminate"});

    EXPECT_THAT(takeTexts("host"),
                ElementsAre("starts App: debug off, dry run off, plug-ins DebugPlugin, AnalyticPlugin",
                            "didFinishLaunching → true", "didBecomeActive", "willResignActive",
                            "didEnterBackground", "willEnterForeground", "didBecomeActive",
                            "willResignActive", "willTerminate", "has ended App"));
    EXPECT_FALSE(Platform::isInstalled());
}

TEST_F(EngineTest, ExplainsWhatTheMomentOfTheAppsLifeDoesNotAllow) {
    expectErrors({{"activate", "this one is not running: launch starts it"},
                  {"track open", "the app does not run: launch starts it"}});
    play({"launch"});
    expectErrors({{"launch", "the app runs already: relaunch"},
                  {"resign", "resign is for an app that is active; this one is inactive"}});
    play({"activate"});
    EXPECT_THAT(errorOf("background"), HasSubstr("this one is active: resign comes next"));
    play({"resign", "background"});
    EXPECT_THAT(errorOf("activate"), HasSubstr("this one is in the background: foreground comes next"));
    play({"terminate"});
    EXPECT_THAT(errorOf("activate"), HasSubstr("launch starts it"));
}

TEST_F(EngineTest, ShowsWhatEachSinkGetsOrWhyItKeepsSilent) {
    play({"launch", "revenue early 1 USD"});
    EXPECT_THAT(takeTexts("router"),
                ElementsAre(StartsWith("no sink is registered: the router keeps early without")));

    EXPECT_EQ(
        shown({"register console", "register backend", "flush", "ignore console quiet loud", "track quiet"}),
        "no sink got quiet");
    EXPECT_THAT(takeTexts("sink"), ElementsAre("console ignores quiet: it is on its list",
                                               "backend ignores quiet: it is on its list"));

    play({"track birthday day=2024-02-29"});
    EXPECT_THAT(takeTexts("sink"),
                ElementsAre(StartsWith("backend got birthday "),
                            StartsWith("console cannot print birthday: JSON holds no date")));

    play({"register backend"});
    EXPECT_THAT(takeTexts("host"), Contains(HasSubstr("for the 2. time")));
    play({"revenue sale 4.990 USD"});
    EXPECT_THAT(takeTexts("sink"), ElementsAre("backend got sale 4.99 USD", "backend got sale 4.99 USD"));
}

TEST_F(EngineTest, SwitchesOfTheCallHoldForEveryLaunchAndThoseOfALaunchForThatOne) {
    begin(sampleApp, {.debug = true});
    play({"launch dry-run", "register backend", "track open"});
    const auto played = events();
    EXPECT_EQ(played.at(played.size() - 2).text, "backend is passed over: dry run");
    EXPECT_EQ(played.back().text, "no sink got open");
    play({"relaunch"});

    const auto told = takeTexts("host");
    EXPECT_THAT(told, Contains(StartsWith("starts App: debug on, dry run on")));
    EXPECT_THAT(told, Contains(StartsWith("starts App: debug on, dry run off")));
}

TEST_F(EngineTest, LooksServicesUpAsAPlugInWould) {
    EXPECT_EQ(shown({"launch", "lookup AnalyticPluggable"}),
              "AnalyticPluggable → AnalyticPlugin, number 2 of 2");

    begin(R"({"bundleIdentifier": "a", "plugins": []})");
    EXPECT_THAT(errorOf("launch debug"), HasSubstr("by a DebugPlugin, and this app has none"));
    EXPECT_EQ(shown({"launch", "lookup AnalyticPluggable"}), "AnalyticPluggable → no plug-in offers it");
    EXPECT_THAT(errorOf("track open"),
                HasSubstr("no plug-in that offers AnalyticPluggable; one would be AnalyticPlugin"));
}

TEST_F(EngineTest, RefusesWhatItDoesNotUnderstandAndGoesOn) {
    play({"launch"});
    expectErrors({
        {"trak open", "there is no command \"trak\": did you mean track?"},
        {"xyzzy", "there is no command \"xyzzy\"; help lists them all"},
        {"track", "track wants NAME: track NAME [KEY=VALUE…]"},
        {"status now", "status does not want \"now\": status"},
        {"launch dryrun", "there is no switch \"dryrun\"; known: debug, dry-run; did you mean dry-run?"},
        {"register consol", "there is no sink \"consol\"; known: console, backend; did you mean console?"},
        {"revenue sale 4,99 USD", "expected an amount with a point"},
        {"lookup AnalyticPlugable", "did you mean AnalyticPluggable?"},
        {"say \"open", "a quote is left open"},
    });
    EXPECT_THAT(errorOf("no", {"script", "tour.play:7"}), StartsWith("tour.play:7: there is no command"));
    play({"", "# a comment", "status", "network", "help", "help track", "wait 0s"});
    EXPECT_FALSE(engine().isOver());
    play({"quit"});
    EXPECT_TRUE(engine().isOver());
}

} // namespace corvantile::tool::EngineTest
