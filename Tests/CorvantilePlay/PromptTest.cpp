#include "Tests/CorvantilePlay/SampleFolder.hpp"
#include "Tests/CorvantilePlay/ToolRun.hpp"

#include <chrono>
#include <csignal>

#include <poll.h>
#include <pty.h>

namespace corvantile::tool::PromptTest {

using namespace std::chrono_literals;

constexpr const char* prompt = "corvantile> ";

// The tool on a terminal of its own, at its prompt.
class Terminal {
public:
    explicit Terminal(const std::string& arguments, unsigned short columns = 80) {
        const winsize size{.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
        const auto command = "exec " + ToolRun::tool() + " " + arguments;
        process_ = ::forkpty(&descriptor_, nullptr, nullptr, &size);
        if (process_ != 0) {
            await(prompt);
            return;
        }
        ::setenv("TERM", "xterm", 1);
        ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        ::_exit(127);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        if (process_ > 0) ::kill(process_, SIGKILL);
        if (process_ > 0) static_cast<void>(exitCode());
        ::close(descriptor_);
    }

    void type(const std::string& keys) const {
        EXPECT_EQ(::write(descriptor_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    // Awaits what the line shows, and the next prompt.
    void enter(const std::string& line, const std::string& shown) {
        type(line + "\n");
        await(shown);
        await(prompt);
    }

    // What the terminal shows up to `text`, since the last call.
    std::string await(const std::string& text) {
        const auto deadline = std::chrono::steady_clock::now() + 20s;
        auto found = shown_.find(text);
        while (found == std::string::npos && std::chrono::steady_clock::now() < deadline && readSome())
            found = shown_.find(text);
        EXPECT_NE(found, std::string::npos) << "no " << text << " in " << shown_;
        const auto end = found == std::string::npos ? shown_.size() : found + text.size();
        const auto before = shown_.substr(0, end);
        shown_.erase(0, end);
        return before;
    }

    // The exit code, once the tool has ended.
    int exitCode() {
        while (readSome()) {
        }
        ::kill(process_, SIGKILL); // nothing, where it has ended
        int status = 0;
        ::waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    // False at the end of the output, and after a time without any.
    bool readSome() {
        pollfd output{descriptor_, POLLIN, 0};
        if (::poll(&output, 1, 10000) <= 0) return false;
        std::array<char, 4096> bytes;
        const auto count = ::read(descriptor_, bytes.data(), bytes.size());
        if (count <= 0) return false;
        shown_.append(bytes.data(), static_cast<std::size_t>(count));
        return true;
    }

    int descriptor_ = -1;
    pid_t process_ = -1;
    std::string shown_;
};

class Prompt : public testing::Test {
protected:
    Prompt() {
        ::setenv("XDG_STATE_HOME", folder_.state().c_str(), 1);
        folder_.write("app.json", R"({"bundleIdentifier": "com.example.prompt",
            "plugins": [{"kind": "DebugPlugin"}, {"kind": "AnalyticPlugin"}, {"kind": "UserPreference"}],
            "sinks": [{"kind": "RecordingSink", "name": "backend"}, {"kind": "RecordingSink", "name": "band"}]})");
    }

    [[nodiscard]] std::string play() const { return "play --app '" + folder_.app().string() + "'"; }

    SampleFolder folder_;
};

TEST_F(Prompt, CompletesCommandsAndTheirArguments) {
    Terminal terminal(play());
    terminal.enter("lau\tdry\t", "debug on, dry run on"); // a switch
    terminal.type("register ba\t");                       // several sinks are listed
    terminal.await("backend  band");
    terminal.await(std::string(prompt) + "register ba");
    terminal.enter("n\t", "registers sink band");
    terminal.enter("look\tAnaly\t", "AnalyticPluggable → AnalyticPlugin, number 2 of 3");
    terminal.type("quit\n");
    EXPECT_EQ(terminal.exitCode(), 0);
}

TEST_F(Prompt, RemembersLinesOfEarlierPlays) {
    {
        Terminal terminal(play());
        terminal.enter("say première", "you      première");
        terminal.type("quit\n");
        EXPECT_EQ(terminal.exitCode(), 0);
    }
    Terminal terminal(play());
    terminal.enter("\x1b[A\x1b[A, encore", "you      première, encore"); // the line before quit
    terminal.type("\x04");
    EXPECT_EQ(terminal.exitCode(), 0);
    EXPECT_TRUE(std::filesystem::exists(folder_.state() / "corvantile" / "prompt_history"));
}

TEST_F(Prompt, MovesTheCursorInsideTheLine) {
    Terminal terminal(play());
    terminal.type("say llo\x1b[D\x1b[D\x1b[Dhe\n");
    terminal.await("you      hello");
}

TEST_F(Prompt, ClearsTheLineOnInterruptAndEndsOnAnEmptyOne) {
    Terminal terminal(play());
    terminal.type("nonsense");
    terminal.await("nonsense");
    terminal.type("\x03say still here\n");
    EXPECT_THAT(terminal.await("you      still here"), Not(HasSubstr("there is no command")));
    terminal.await(prompt);
    terminal.type("\x03");
    EXPECT_EQ(terminal.exitCode(), 130);
}

TEST_F(Prompt, DrawsAHalfTypedLineAgainBelowWhatIsPrintedMeanwhile) {
    Terminal terminal(play());
    terminal.enter("launch", "didFinishLaunching");
    terminal.type("say half");
    terminal.await("publishes isLoaded: true"); // a second after the launch
    terminal.await(std::string(prompt) + "say half");
    terminal.type(" and whole\n");
    terminal.await("you      half and whole");
}

TEST_F(Prompt, ErasesEveryRowOfALineThatWraps) {
    Terminal terminal(play(), 40);
    terminal.enter("launch", "didFinishLaunching");
    terminal.type("say " + std::string(60, 'x'));
    EXPECT_THAT(terminal.await("publishes isLoaded: true"), HasSubstr("\x1b[1A\r\x1b[J"));
}

} // namespace corvantile::tool::PromptTest
