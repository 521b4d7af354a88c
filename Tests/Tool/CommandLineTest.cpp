#include "Tests/Tool/SampleFolder.hpp"

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <regex>
#include <string>
#include <utility>

#include <sys/wait.h>

namespace corvantile::tool {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

struct Outcome {
    int exitCode = -1;
    std::string output; // standard error too
};

// Runs the tool that was built beside this test.
Outcome run(const std::string& arguments, const std::string& input = "") {
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const auto tool = folder / "../../Tools/corvantile/corvantile";
    const auto line = "printf '" + input + "' | '" + tool.string() + "' " + arguments + " 2>&1";
    std::FILE* const stream = ::popen(line.c_str(), "r");
    Outcome outcome;
    std::array<char, 4096> bytes;
    while (const auto count = std::fread(bytes.data(), 1, bytes.size(), stream))
        outcome.output.append(bytes.data(), count);
    const int status = ::pclose(stream);
    if (WIFEXITED(status)) outcome.exitCode = WEXITSTATUS(status);
    return outcome;
}

// Without what differs from moment to moment and from machine to machine.
std::string normalised(std::string output) {
    const std::pair<const char*, const char*> replacements[] = {
        {R"((^|\n)\d\d:\d\d\.\d\d\d)", "$1TIME"},
        {R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d\d\d)", "MOMENT"},
        {R"(network  [^\n]*)", "network  STATUS"},
        {R"(Plugin:\d+)", "Plugin:LINE"},
        {R"(connection_status(\\" : \\"|=)\w+)", "connection_status$1STATUS"}};
    for (const auto& [pattern, replacement] : replacements)
        output = std::regex_replace(output, std::regex(pattern), replacement);
    return output;
}

constexpr const char* app = R"({
    "bundleIdentifier": "com.example.app",
    "name": "App",
    "plugins": [{"kind": "DebugPlugin", "configuration": {"debug": true}}, {"kind": "AnalyticPlugin"}],
    "sinks": [{"kind": "ConsoleComponent", "name": "console"},
              {"kind": "RecordingSink", "name": "backend", "ignore": ["quiet"]}]
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

    SampleFolder folder_;
};

TEST_F(CommandLineTest, PlaysAScript) {
    const auto [exitCode, output] = run(playScript("# the road of one event\n"
                                                   "launch\n"
                                                   "track open n=1 # and on to both\n"
                                                   "track quiet\n"
                                                   "say it's \"all  done\"\n"
                                                   "relaunch dry-run\n"
                                                   "track quiet\n"));

    EXPECT_EQ(exitCode, 0);
    const std::string rule = R"(\n<-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+--+->\n)";
    const auto frame = [&](const std::string& json) {
        return "TIME  console  \"" + rule + R"([OSTREL LABS] TRACKED EVENT\n\n)" + json + rule + "\"\n";
    };
    const auto quietFrame = frame(R"({\n  \"eventName\" : \"quiet\"\n})");
    EXPECT_EQ(normalised(output),
              "TIME  script   > launch\n"
              "TIME  host     starts App: debug on, dry run off, plug-ins DebugPlugin, AnalyticPlugin\n"
              "TIME  network  STATUS\n"
              "TIME  host     registers sink console (ConsoleComponent)\n"
              "TIME  host     registers sink backend (RecordingSink)\n"
              "TIME  console  MOMENT: AnalyticPlugin:LINE (flush()) -> subscribed\n"
              "TIME  host     didFinishLaunching → true\n"
              "TIME  script   > track open n=1 # and on to both\n"
              "TIME  host     tracks open connection_status=STATUS n=1\n" +
                  frame(R"({\n  \"eventName\" : \"open\",\n  \"params\" : {\n    )"
                        R"(\"connection_status\" : \"STATUS\",\n    \"n\" : 1\n  }\n})") +
                  "TIME  sink     backend got open connection_status=STATUS n=1\n"
                  "TIME  script   > track quiet\n"
                  "TIME  host     tracks quiet\n"
                  "TIME  sink     backend ignores quiet: it is on its list\n" +
                  quietFrame +
                  "\nTIME  script   it's all  done\n"
                  "TIME  script   > relaunch dry-run\n"
                  "TIME  host     willTerminate\n"
                  "TIME  console  MOMENT: AnalyticPlugin:LINE (flush()) -> isDisposed\n"
                  "TIME  host     has ended App\n"
                  "TIME  host     starts App: debug on, dry run on, plug-ins DebugPlugin, AnalyticPlugin\n"
                  "TIME  network  STATUS\n"
                  "TIME  host     registers sink console (ConsoleComponent)\n"
                  "TIME  host     registers sink backend (RecordingSink)\n"
                  "TIME  console  MOMENT: AnalyticPlugin:LINE (flush()) -> subscribed\n"
                  "TIME  host     didFinishLaunching → true\n"
                  "TIME  script   > track quiet\n"
                  "TIME  host     tracks quiet\n" +
                  quietFrame +
                  "TIME  sink     backend is passed over: dry run\n"
                  "TIME  console  MOMENT: AnalyticPlugin:LINE (flush()) -> isDisposed\n");
}

TEST_F(CommandLineTest, EndsAScriptAtItsFirstFault) {
    const auto [exitCode, output] = run(playScript("\nlaunhc\nsay never\n"));

    EXPECT_EQ(exitCode, 1);
    EXPECT_THAT(output, HasSubstr("a.play:2: there is no command \"launhc\": did you mean launch?"));
    EXPECT_THAT(output, testing::Not(HasSubstr("never")));
}

TEST_F(CommandLineTest, GoesOnInAPipeAndRemembersTheFault) {
    const auto [exitCode, output] = run(play() + "--json", R"(launhc\nsay still here)");

    EXPECT_EQ(exitCode, 1);
    EXPECT_THAT(output, HasSubstr("standard input:1: there is no command"));
    EXPECT_THAT(output, EndsWith(R"("who":"input","kind":"say","text":"still here"})"
                                 "\n"));
    EXPECT_EQ(run(play(), R"(quit\nnonsense)").exitCode, 0);
}

TEST_F(CommandLineTest, TellsAFaultOfTheCallByItsExitCode) {
    folder_.write("app.json", "{");
    for (const auto& arguments :
         {std::string("paly"), std::string("play --scrip x"), play(),
          std::string("play --script /nowhere/x.play"), std::string("play --app /nowhere"),
          std::string("records"), std::string("keychain --state /nowhere"),
          std::string("doctor --state /dev/null"), std::string("outbox --state /nowhere"),
          std::string("catalogue /nowhere"), std::string("receipts a.json"),
          std::string("receipts /nowhere --catalogue /nowhere")})
        EXPECT_EQ(run(arguments).exitCode, 2) << arguments;
    EXPECT_EQ(run("--help").exitCode, 0);
    EXPECT_THAT(run("--version").output, StartsWith("corvantile "));
}

TEST_F(CommandLineTest, PlaysTheTourWithoutAFault) {
    const auto [exitCode, output] = run("");

    EXPECT_EQ(exitCode, 0);
    EXPECT_THAT(output, testing::Not(HasSubstr("host     error: ")));
}

} // namespace
} // namespace corvantile::tool
