#include "Tests/CorvantilePlay/GoldenState.hpp"
#include "Tests/CorvantilePlay/SampleCatalogue.hpp"
#include "Tests/CorvantilePlay/ToolRun.hpp"

#include <csignal>
#include <regex>

namespace corvantile::tool::CommandLineTest {

// Without what differs from moment to moment and from machine to machine.
std::string normalised(std::string output) {
    const std::pair<const char*, const char*> replacements[] = {
        {R"((^|\n)\d\d:\d\d\.\d\d\d)", "$1TIME"},
        {R"(network  [^\n]*)", "network  STATUS"},
        {R"(connection_status=\w+)", "connection_status=STATUS"}};
    for (const auto& [pattern, replacement] : replacements)
        output = std::regex_replace(output, std::regex(pattern), replacement);
    return output;
}

constexpr const char* app = R"({
    "bundleIdentifier": "com.example.app",
    "name": "App",
    "plugins": [{"kind": "AnalyticPlugin"}],
    "sinks": [{"kind": "RecordingSink", "name": "backend"}]
})";

class CommandLineTest : public testing::Test {
protected:
    CommandLineTest() { folder_.write("app.json", app); }

    [[nodiscard]] std::string play() const {
        return "play --app '" + folder_.app().string() + "' --state '" + folder_.state().string() + "' ";
    }
    [[nodiscard]] std::string playScript(const std::string& text) const {
        return play() + "--script '" + folder_.write("a.play", text).string() + "' ";
    }

    // `--state` with a folder in which no file can be used.
    [[nodiscard]] std::string damagedState() const {
        std::filesystem::create_directories(folder_.state() / "keychain");
        for (const auto* const file : {"user-defaults.sqlite", "outbox.sqlite", "keychain/vault.sqlite"})
            folder_.write(std::string("state/") + file, "no database, but long enough to be looked at");
        return "--state '" + folder_.state().string() + "' ";
    }
    [[nodiscard]] std::string written(const std::string& name, const std::string& text) const {
        return "'" + folder_.write(name, text).string() + "' ";
    }

    const ToolRun run;
    SampleFolder folder_;
};

TEST_F(CommandLineTest, PlaysAScript) {
    const auto [exitCode, output, errors] = run(playScript(R"(# the road of one event
launch
track open n=1 # and on to the sink
say it's "all  done"
)"));

    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(normalised(output), R"(TIME  script   > launch
TIME  host     starts App: debug off, dry run off, plug-ins AnalyticPlugin
TIME  network  STATUS
TIME  host     registers sink backend (RecordingSink)
TIME  host     didFinishLaunching → true
TIME  script   > track open n=1 # and on to the sink
TIME  host     tracks open connection_status=STATUS n=1
TIME  sink     backend got open connection_status=STATUS n=1

TIME  script   it's all  done
)");
}

TEST_F(CommandLineTest, EndsAScriptAtItsFirstErrorAndGoesOnInAPipe) {
    const auto script = run(playScript("\nlaunhc\nsay never\n"));
    EXPECT_EQ(script.exitCode, 1);
    EXPECT_THAT(script.errors, EndsWith("a.play:2: there is no command \"launhc\": did you mean launch?\n"));
    EXPECT_THAT(script.output, Not(HasSubstr("never")));

    const auto pipe = run(play() + "--json", R"(launhc\nsay still here)");
    EXPECT_EQ(pipe.exitCode, 1);
    EXPECT_THAT(pipe.errors, StartsWith("corvantile: standard input:1: there is no command"));
    EXPECT_THAT(pipe.output, EndsWith(R"("who":"input","text":"still here"})"
                                      "\n"));
    EXPECT_EQ(run(play(), R"(quit\nnonsense)").exitCode, 0);
}

TEST_F(CommandLineTest, SaysWhyItFailsOnStandardError) {
    const auto receipt = written("status.json", R"({"status": 21003})");
    const auto catalogue = written("Catalogue.storekit", sampleCatalogue);
    const auto good = written("good.json", R"({"status": 0})");
    const auto noReceipts = folder_.app().string() + "/app.json: the app reports no purchase";
    const struct {
        std::string arguments;
        int exitCode;
        std::string error;
    } cases[] = {
        {"records " + damagedState(), 1, "corvantile: user defaults: "},
        {"keychain --json " + damagedState(), 1, "corvantile: "},
        {"outbox " + damagedState(), 1, "corvantile: outbox: "},
        {"doctor --json " + damagedState(), 1, "corvantile: outbox: "},
        {"receipts " + receipt + "--catalogue " + catalogue, 1, "status.json: The receipt is not authentic."},
        {"receipts --json " + good + "--catalogue " + receipt, 1, "corvantile: "},
        {"catalogue --json " + receipt, 1, "corvantile: "},
        {"receipts " + good, 2, "receipts wants the products: --app FOLDER of an app, or --catalogue FILE"},
        {"receipts " + good + "--app '" + folder_.app().string() + "'", 2, noReceipts},
        {"receipts /nowhere --catalogue " + catalogue, 2, "/nowhere: expected a receipt"},
        {"catalogue /nowhere", 2, "/nowhere: expected a StoreKit configuration file"},
        {"play --scrip x", 2, "corvantile: "},
        {"'pa\x1b[2J\xC2\x9By'", 2, R"(pa\u{1B}[2J\u{9B}y)"},
        {"play --script /dev/zero", 2, "/dev/zero: it cannot be read to its end: a line is longer than any"},
        {"catalogue /dev/zero", 2, "it has more than 64 megabytes"},
        {"play --script /nowhere/x.play", 2, "/nowhere/x.play: expected a script"},
        {play() + "< /", 2, "standard input: it cannot be read to its end: Is a directory"},
        {"play --app /nowhere", 2, "/nowhere/app.json: expected an app description"},
        {"play --fresh --state " + folder_.app().string(), 2, "nothing is deleted, because"},
        {"records", 2, "com.example.sampleapp: expected an app's state folder, but there is nothing"},
        {"keychain --state /nowhere", 2, "/nowhere: expected an app's state folder"},
        {"doctor --state /dev/null", 2, "/dev/null: expected an app's state folder, but this is no folder"},
    };
    for (const auto& [arguments, exitCode, error] : cases) {
        SCOPED_TRACE(arguments);
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode);
        EXPECT_THAT(outcome.errors, AllOf(StartsWith("corvantile: "), HasSubstr(error)));
        EXPECT_THAT(outcome.errors, Not(HasSubstr("\x1b")));
        EXPECT_TRUE(exitCode != 2 || outcome.output.empty()) << outcome.output;
    }
}

// A kill cannot remove what the tool has copied; the next call does, once nobody uses it.
TEST_F(CommandLineTest, RemovesTemporaryFoldersThatAKillLeftBehindAndNoOthers) {
    const auto temporary = folder_.app() / "tmp";
    for (const auto* const name : {"corvantile-tool-leftbe", "corvantile-tool-in-use", "corvantile-tools"})
        std::filesystem::create_directories(temporary / name);
    const auto outcome =
        run.shell("cd '" + temporary.string() + "'; " +
                  "touch -d '1 minute ago' *; flock corvantile-tool-in-use sh -c \"TMPDIR=. " +
                  ToolRun::tool() + " doctor --state .\"; ls");
    EXPECT_THAT(outcome.output, EndsWith("corvantile-tool-in-use\ncorvantile-tools\n"));
    EXPECT_EQ(run.shell("TMPDIR=/nowhere " + ToolRun::tool()).errors,
              "corvantile: there is no folder for temporary files; TMPDIR names one\n");
}

TEST_F(CommandLineTest, ShowsAnErrorOnceWhereBothStreamsAreOne) {
    const auto both = run(playScript("launhc"), "", "2>&1").output;

    EXPECT_THAT(both, HasSubstr("host     error: "));
    EXPECT_THAT(both, Not(HasSubstr("corvantile: ")));
}

TEST_F(CommandLineTest, FailsWhenStandardOutputCannotBeWritten) {
    folder_.write("app.json", R"({"bundleIdentifier": "com.example.golden", "plugins": [
        {"kind": "UserPreference"}, {"kind": "DatabasePlugin"}]})");
    copyGoldenState(folder_.state());
    const auto state = " --state '" + folder_.state().string() + "'";
    const auto receipt = written("good.json", R"({"status": 0})");
    const auto catalogue = written("Catalogue.storekit", sampleCatalogue);
    for (const std::string& arguments :
         {std::string("--help"), std::string("--version"), std::string("records --help"), std::string(),
          playScript("say so"), playScript("say so") + "--json", "records" + state, "keychain" + state,
          "outbox --json" + state, "doctor" + state, "receipts " + receipt + "--catalogue " + catalogue,
          "catalogue " + catalogue, std::string("prove --short")}) {
        const auto outcome = run(arguments, "", "> /dev/full");
        EXPECT_EQ(outcome.exitCode, 3) << arguments;
        EXPECT_EQ(outcome.errors, "corvantile: standard output cannot be written: No space left on device\n")
            << arguments;
    }
    // A file of the state would get the number of a closed standard output, and what is printed.
    EXPECT_EQ(run(play(), "launch", ">&-").exitCode, 3);
    EXPECT_EQ(run("doctor" + state).exitCode, 0);
}

TEST_F(CommandLineTest, EndsSoonAndSilentlyWhenAPipeIsClosed) {
    std::string script = "launch\n";
    for (int line = 0; line < 5000; ++line) script += "say something that soon fills a pipe\n";
    const auto ended = folder_.app() / "ended.txt";
    const auto outcome = run.shell("{ " + ToolRun::tool() + " " + playScript(script + "wait 5m\n") +
                                   "--server; echo $? > '" + ended.string() + "'; } | head -1");

    EXPECT_EQ(outcome.errors, "");
    std::ifstream stream(ended);
    int exitCode = 0;
    stream >> exitCode;
    EXPECT_EQ(exitCode, 128 + SIGPIPE);
}

TEST_F(CommandLineTest, LooksAtTheStateThatAPlayLeavesUnlessItBeginsAfresh) {
    folder_.write("app.json", R"({"bundleIdentifier": "com.example.kept", "plugins": [
        {"kind": "UserPreference"}, {"kind": "DatabasePlugin"}]})");
    const auto option = " --app '" + folder_.app().string() + "'";
    EXPECT_EQ(run("play" + option, R"(launch\nwait 1100ms)").exitCode, 0);
    EXPECT_THAT(run("records" + option).output, HasSubstr("appconfig_Setting_"));
    EXPECT_THAT(run("keychain" + option).output, HasSubstr("com.example.kept  realm_encryption_key"));

    EXPECT_THAT(run("play --fresh" + option).output, HasSubstr("begins with nothing: deletes keychain, "));
    EXPECT_EQ(run("records" + option).output + run("keychain" + option).output,
              "There are no records.\nThe keychain is empty.\n");
}

} // namespace corvantile::tool::CommandLineTest
