#include "CorvantilePlay/detail/CommandLine/Play.hpp"

#include "CorvantileDesktop/DesktopOptions.hpp"
#include "CorvantilePlay/detail/CommandLine/LineEditor.hpp"
#include "CorvantilePlay/detail/CommandLine/LineReader.hpp"
#include "CorvantilePlay/detail/Commands/CommandCompletion.hpp"
#include "CorvantilePlay/detail/Commands/Engine.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"
#include "CorvantilePlay/detail/Output/OutputFormat.hpp"
#include "CorvantilePlay/detail/Output/StandardOutput.hpp"
#include "CorvantilePlay/detail/Output/ToolProcess.hpp"
#include "CorvantilePlay/detail/Text/FileText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace corvantile::tool {

namespace {

std::unique_ptr<OutputFormat> makeFormat(bool json) {
    if (json) return std::make_unique<JSONLinesFormat>(std::cout);
    const bool isColoured = ::isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
    return std::make_unique<TerminalFormat>(std::cout, isColoured);
}

[[noreturn]] void failRead(const std::string& what, int error) {
    const auto why =
        error == EMSGSIZE ? "a line is longer than any command" : std::generic_category().message(error);
    throw UsageError(what + ": it cannot be read to its end: " + why);
}

// Beside the state folders of apps. No bundle identifier has an underscore.
std::filesystem::path historyFile() {
    const auto beside = defaultStateFolder("app");
    return beside.empty() ? beside : beside.parent_path() / "prompt_history";
}

// A play on the terminal: an engine, its format, and where the commands come from.
class Session {
public:
    Session(AppDescription app, const PlayOptions& options)
        : format_(makeFormat(options.json)),
          isPrompting_(!options.json && ::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1),
          engine_(std::move(app),
                  {.stateFolder = options.state,
                   .switches = options.switches,
                   .isInterrupted = [] { return mustStop(); },
                   .hasServer = options.hasServer,
                   .isFresh = options.isFresh},
                  [this](const PlayEvent& event) { show(event); }) {}

    ExitCode playScript(const Descriptor& script, const std::filesystem::path& file) {
        return playLines({script.value(), "script", file.string(), true});
    }

    ExitCode playInput() {
        if (isPrompting_) return playPrompt();
        const bool isTerminal = ::isatty(STDIN_FILENO) == 1;
        return playLines({STDIN_FILENO, isTerminal ? "" : "input", "standard input"});
    }

    [[nodiscard]] bool isOver() const { return engine_.isOver() || mustStop(); }

private:
    struct Source {
        int descriptor;
        std::string who;  // gives the commands; empty: a person at a terminal, who sees an error and goes on
        std::string name; // before the number of a line
        bool endsAtFailure = false;
    };

    ExitCode playLines(const Source& source) {
        LineReader reader(source.descriptor);
        for (int number = 1; !isOver() && !reader.isAtEnd();) {
            if (!reader.isReady()) engine_.runLoop([&] { return reader.isReady(); });
            const auto line = reader.next();
            if (!line) continue;
            const auto place = source.name + ":" + std::to_string(number++);
            if (engine_.play(*line, source.who.empty() ? Origin{} : Origin{source.who, place})) continue;
            failed_ = failed_ || !source.who.empty();
            if (source.endsAtFailure) return ExitCode::failed;
        }
        if (reader.error() != 0) failRead(source.name, reader.error());
        return outcome();
    }

    ExitCode playPrompt() {
        ownedEditor_ = std::make_unique<LineEditor>(LineEditor::Options{
            .prompt = "corvantile> ",
            .history = historyFile(),
            .complete = [this](auto line) { return completionsOf(line, engine_.commands(), engine_.app()); },
            .runLoop = [this](const auto& done) { engine_.runLoop(done); }});
        editor_ = ownedEditor_.get();
        while (!isOver()) {
            const auto line = ownedEditor_->read();
            if (!line) {
                std::cerr << '\n'; // the input ended on the line of the prompt
                break;
            }
            engine_.play(*line);
        }
        return outcome();
    }

    // Called on any thread, one at a time.
    void show(const PlayEvent& event) {
        if (auto* const editor = editor_.load())
            editor->printAround([&] { print(event); });
        else
            print(event);
    }

    // The terminal shows a typed command already.
    void print(const PlayEvent& event) {
        if (event.kind != "command" || event.who != Origin().who) format_->show(event);
        if (event.kind == "error" && !areStandardStreamsOne()) printError(event.text);
    }

    [[nodiscard]] ExitCode outcome() const {
        if (isInterrupted()) return ExitCode::interrupted;
        return failed_ ? ExitCode::failed : ExitCode::success;
    }

    const std::unique_ptr<OutputFormat> format_;
    const bool isPrompting_;                  // else lines are read as they come
    std::unique_ptr<LineEditor> ownedEditor_; // outlives the engine, whose threads print around it
    std::atomic<LineEditor*> editor_ = nullptr;
    Engine engine_;
    bool failed_ = false;
};

} // namespace

ExitCode play(const PlayOptions& options, const PlayRegistry& registry) {
    auto app = readApp(options.app, registry);
    if (options.script.empty()) return Session(std::move(app), options).playInput();
    const auto script = openFile(options.script, "a script");
    return Session(std::move(app), options).playScript(script, options.script);
}

ExitCode playTour(const PlayRegistry& registry) {
    const TemporaryFolder state;
    const PlayOptions options{.state = state.path() / "state"}; // the folder itself is locked
    auto app = readApp(options.app, registry);
    const auto file = app.folder / "tour.play";
    const auto script = openFile(file, "a script");
    Session session(std::move(app), options);
    const auto code = session.playScript(script, file);
    const bool hasPrompt = code == ExitCode::success && !session.isOver() && ::isatty(STDIN_FILENO) == 1;
    return hasPrompt ? session.playInput() : code;
}

} // namespace corvantile::tool
