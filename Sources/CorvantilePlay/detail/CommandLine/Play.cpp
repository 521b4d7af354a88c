#include "CorvantilePlay/detail/CommandLine/Play.hpp"

#include "CorvantilePlay/detail/CommandLine/LineReader.hpp"
#include "CorvantilePlay/detail/Commands/Engine.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"
#include "CorvantilePlay/detail/Output/Interruption.hpp"
#include "CorvantilePlay/detail/Output/JSONLinesFormat.hpp"
#include "CorvantilePlay/detail/Output/StandardOutput.hpp"
#include "CorvantilePlay/detail/Output/TerminalFormat.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "CorvantilePlay/detail/Text/VisibleText.hpp"

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

// A play on the terminal: an engine, its format, and where the commands come from.
class Session {
public:
    Session(AppDescription app, const PlayOptions& options)
        : format_(makeFormat(options.json)),
          engine_(std::move(app),
                  {.stateFolder = options.state,
                   .switches = options.switches,
                   .isInterrupted = mustStop,
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
        const bool isPrompt = ::isatty(STDIN_FILENO) == 1;
        LineReader reader(STDIN_FILENO);
        for (int number = 1; !isOver() && !reader.isAtEnd();) {
            const auto line = isPrompt ? ask(reader) : await(reader);
            if (!line) continue;
            const Origin origin =
                isPrompt ? Origin{} : Origin{"input", "standard input:" + std::to_string(number++)};
            if (!engine_.play(*line, origin) && !isPrompt) failed_ = true;
        }
        if (reader.error() != 0) failRead("standard input", reader.error());
        return outcome();
    }

    [[nodiscard]] bool isOver() const { return engine_.isOver() || mustStop(); }

private:
    // Who types a command has it on the screen already.
    void show(const PlayEvent& event) {
        if (event.kind != "command" || event.who != Origin().who) format_->show(event);
        if (event.kind == "error" && !areStandardStreamsOne())
            std::cerr << "corvantile: " << visibleText(event.text) << '\n';
    }

    std::optional<std::string> await(LineReader& reader) {
        engine_.runLoop([&] { return reader.isReady(); });
        return reader.next();
    }

    std::optional<std::string> ask(LineReader& reader) {
        format_->showPrompt();
        auto line = await(reader);
        format_->endPrompt();
        if (!line) std::cerr << '\n'; // the person ended the input in the middle of the prompt's line
        return line;
    }

    [[nodiscard]] ExitCode outcome() const {
        if (isInterrupted()) return ExitCode::interrupted;
        return failed_ ? ExitCode::failed : ExitCode::success;
    }

    const std::unique_ptr<OutputFormat> format_;
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
    const bool goesOn = code == ExitCode::success && !session.isOver() && ::isatty(STDIN_FILENO) == 1;
    return goesOn ? session.playInput() : code;
}

} // namespace corvantile::tool
