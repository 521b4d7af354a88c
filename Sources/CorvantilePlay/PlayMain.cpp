#include "CorvantilePlay/PlayMain.hpp"

#include "CorvantilePlay/detail/CommandLine/CommandLine.hpp"
#include "CorvantilePlay/detail/Output/StandardOutput.hpp"
#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

#include <CLI/CLI.hpp>

#include <utility>

namespace corvantile {

namespace {

tool::ExitCode run(int argc, char** argv, PlayRegistry registry) {
    CLI::App app;
    tool::Call call{.registry = std::move(registry)};
    tool::buildCommandLine(app, call);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) { // --help and --version, too
        return app.exit(error) == 0 ? tool::ExitCode::success : tool::ExitCode::usage;
    }
    tool::installSignalHandler();
    return call.run();
}

} // namespace

int playMain(int argc, char** argv, PlayRegistry registry) {
    tool::forbidMemoryDumps();
    tool::StandardOutput output;
    const auto code = tool::endingWithStatus([&] { return run(argc, argv, std::move(registry)); });
    return static_cast<int>(output.close(code));
}

} // namespace corvantile
