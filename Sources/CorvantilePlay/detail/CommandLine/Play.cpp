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
#include "CorvantilePlay/detail/Text/TerminalText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fstream>
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
    throw UsageError(what + ": it cannot be read to its end: " + std::generic_category().message(error));
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

    ExitCode playScript(std::ifstream& script, const std::filesystem::path& file) {
        std::string line;
        for (int number = 1; !isOver() && std::getline(script, line); ++number) {
            const Origin origin{"script", file.string() + ":" + std::to_string(number)};
            if (!engine_.play(line, origin)) return ExitCode::failed;
        }
        if (script.bad()) failRead(file.string(), errno);
        return outcome();
    }

    ExitCode playInput() {
        if (isPrompting_) return playPrompt();
        const bool isTerminal = ::isatty(STDIN_FILENO) == 1;
        LineReader reader(STDIN_FILENO);
        for (int number = 1; !isOver() && !reader.isAtEnd();) {
            engine_.runLoop([&] { return reader.isReady(); });
            const auto line = reader.next();
            if (!line) continue;
            const Origin origin =
                isTerminal ? Origin{} : Origin{"input", "standard input:" + std::to_string(number++)};
            if (!engine_.play(*line, origin) && !isTerminal) failed_ = true;
        }
        if (reader.error() != 0) failRead("standard input", reader.error());
        return outcome();
    }

    [[nodiscard]] bool isOver() const { return engine_.isOver() || mustStop(); }

private:
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
        if (event.kind == "error" && !areStandardStreamsOne())
            std::cerr << "corvantile: " << visibleText(event.text) << '\n';
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

std::ifstream openScript(const std::filesystem::path& file) {
    std::ifstream script(file);
    if (script.is_open() && !std::filesystem::is_directory(file)) return script;
    throw UsageError(file.string() + ": expected a script, but it cannot be read: " +
                     std::generic_category().message(script.is_open() ? EISDIR : errno));
}

} // namespace

ExitCode play(const PlayOptions& options, const PlayRegistry& registry) {
    auto app = readApp(options.app, registry);
    if (options.script.empty()) return Session(std::move(app), options).playInput();
    auto script = openScript(options.script);
    return Session(std::move(app), options).playScript(script, options.script);
}

ExitCode playTour(const PlayRegistry& registry) {
    const TemporaryFolder state;
    const PlayOptions options{.state = state.path()};
    auto app = readApp(options.app, registry);
    const auto file = app.folder / "tour.play";
    auto script = openScript(file);
    Session session(std::move(app), options);
    const auto code = session.playScript(script, file);
    const bool hasPrompt = code == ExitCode::success && !session.isOver() && ::isatty(STDIN_FILENO) == 1;
    return hasPrompt ? session.playInput() : code;
}

} // namespace corvantile::tool
