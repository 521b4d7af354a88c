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

    SampleFolder folder_;
};

TEST_F(CommandLineTest, PlaysAScript) {
    const auto [exitCode, output] = run(playScript(R"(# the road of one event
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
    EXPECT_EQ(run(play()).exitCode, 2);
    for (const auto* const arguments :
         {"paly", "play --scrip x", "play --script /nowhere/x.play", "play --app /nowhere", "records",
          "keychain --state /nowhere", "doctor --state /dev/null", "catalogue /nowhere", "receipts a.json",
          "receipts /nowhere --catalogue /nowhere"})
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
