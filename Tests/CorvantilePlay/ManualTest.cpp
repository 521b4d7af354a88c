#include "CorvantilePlay/detail/CommandLine/CommandLine.hpp"
#include "CorvantilePlay/detail/CommandLine/Completion.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "Tests/CorvantilePlay/ToolRun.hpp"

#include <CLI/CLI.hpp>

#include <sstream>

namespace corvantile::tool::ManualTest {

// What a line prints in the shell, standard error too.
std::string printedBy(const std::string& line) { return ToolRun().shell("exec 2>&1; " + line).output; }

bool hasProgram(const std::string& name) { return !printedBy("command -v " + name).empty(); }

class ToolPages : public testing::Test {
protected:
    ToolPages() { buildCommandLine(app_, call_); }

    [[nodiscard]] std::string manual() const {
        std::ostringstream page;
        EXPECT_EQ(printManual(app_, "1.2.3", page), ExitCode::success);
        return page.str();
    }
    [[nodiscard]] std::string completion(const std::string& shell) const {
        return makeCompletion(describeCommandLine(app_), shell);
    }

    CLI::App app_;
    Call call_;
    TemporaryFolder folder_;
};

TEST_F(ToolPages, ShowInTheManualWhatHelpDoes) {
    const auto page = manual();

    for (const auto* const text : {
             "\"corvantile 1.2.3\"",
             ".SS \"corvantile play\"",
             ".B \"\\-\\-script FILE\"\nCommands, one a line",
             ".B \"FILE\\[u2026]\"\nReceipts, handed in",
             ".B \"track NAME [KEY=VALUE\\[u2026]]\"\ntrack an event",
             ".SH \"EXIT STATUS\"",
             "CORVANTILE_ADJUST_ENDPOINT",
             "app.json",
         })
        EXPECT_THAT(page, HasSubstr(text));
    EXPECT_THAT(page, AllOf(Not(HasSubstr("prove\\-process")), Not(HasSubstr("print\\-"))));
    EXPECT_THAT(app_.help(), AllOf(HasSubstr("CORVANTILE_ADJUST_ENDPOINT"), Not(HasSubstr("print-"))));
}

TEST_F(ToolPages, AreSetByTheFormatterWithoutAWarning) {
    if (!hasProgram("groff")) GTEST_SKIP() << "groff is not installed";
    const auto file = folder_.path() / "corvantile.1";
    std::ofstream(file) << manual();

    const auto page = printedBy("groff -ww -man -Tutf8 -P-cbou '" + file.string() + "'");

    EXPECT_THAT(page, AllOf(Not(HasSubstr("warning")), Not(HasSubstr("error:"))));
    EXPECT_THAT(page, AllOf(HasSubstr("setting KEY=VALUE…"), HasSubstr("--script FILE")));
}

class Completion : public ToolPages {
protected:
    Completion() {
        std::filesystem::create_directories(folder_.path() / "a folder");
        std::ofstream(folder_.path() / "a file");
    }

    // What bash offers for the words typed so far, the last of which is completed.
    [[nodiscard]] std::string bash(const std::string& words) const {
        return inShell("bash", "source ./script.bash; COMP_WORDS=(corvantile " + words +
                                   "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _corvantile; "
                                   "printf \"%s\\n\" \"${COMPREPLY[@]}\" | LC_ALL=C sort");
    }
    // The same in fish, which takes the whole line.
    [[nodiscard]] std::string fish(const std::string& words) const {
        return inShell("fish", "source ./script.fish; complete -C \"corvantile " + words + "\"");
    }

private:
    [[nodiscard]] std::string inShell(const std::string& shell, const std::string& command) const {
        std::ofstream(folder_.path() / ("script." + shell)) << completion(shell);
        return printedBy("cd '" + folder_.path().string() + "' && " + shell + " -c '" + command + "'");
    }
};

constexpr const char* nothing = "\n";

TEST_F(Completion, OffersSubcommandsOptionsFoldersAndFilesInBash) {
    const std::pair<const char*, const char*> cases[] = {
        {"pro", "prove\n"},
        {"--v", "--version\n"},
        {"play --s", "--script\n--server\n--state\n"},
        {"play --state \"\"", "a folder\n"},
        {"play --state = a", "a folder\n"},
        {"play --script \"a f\"", "a file\na folder\n"},
        {"receipts a", "a file\na folder\n"},
        {"receipts --first-date \"\"", nothing},
        {"nonsense \"\"", nothing},
    };
    for (const auto& [words, offered] : cases) EXPECT_EQ(bash(words), offered) << words;
}

TEST_F(Completion, OffersTheSameInFish) {
    if (!hasProgram("fish")) GTEST_SKIP() << "fish is not installed";

    EXPECT_THAT(fish("prov"), HasSubstr("prove\tKill an app"));
    EXPECT_THAT(fish("play --scr"), HasSubstr("--script\tCommands, one a line"));
    EXPECT_THAT(fish("play --state a"), AllOf(HasSubstr("a folder/"), Not(HasSubstr("a file"))));
    EXPECT_THAT(fish("play --script a"), HasSubstr("a file"));
    EXPECT_THAT(fish("receipts --first-date a"), IsEmpty());
    EXPECT_THAT(fish("prove print"), IsEmpty());
}

TEST_F(Completion, QuotesTextsForZshAndRefusesAnUnknownShell) {
    const CommandLineText text{
        .subcommands = {{.name = "open",
                         .help = "It's [one]: open",
                         .options = {{.names = {"--in"}, .value = "FOLDER", .help = "It's [one]: in"}}}}};
    EXPECT_THAT(makeCompletion(text, "zsh"),
                AllOf(HasSubstr(R"('open:It'\''s [one]\: open')"),
                      HasSubstr(R"('--in[It'\''s \[one\]\: in]:FOLDER:_files -/')")));
    EXPECT_THROW(static_cast<void>(makeCompletion(text, "tcsh")), UsageError);
}

} // namespace corvantile::tool::ManualTest
