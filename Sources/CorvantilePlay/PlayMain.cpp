#include "CorvantilePlay/PlayMain.hpp"

#include "CorvantilePlay/detail/CommandLine/CommandLine.hpp"
#include "CorvantilePlay/detail/Output/StandardOutput.hpp"
#include "CorvantilePlay/detail/Output/ToolProcess.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <utility>

namespace corvantile {

namespace {

tool::ExitCode run(int argc, char** argv, PlayRegistry registry) {
    CLI::App app;
    tool::Call call{.registry = std::move(registry)};
    tool::buildCommandLine(app, call);
    try {
        app.parse(argc, argv);
        tool::installSignalHandler();
        return call.run();
    } catch (const CLI::ParseError& error) { // --help and --version, too
        return app.exit(error) == 0 ? tool::ExitCode::success : tool::ExitCode::usage;
    } catch (const tool::UsageError& error) {
        std::cerr << "corvantile: " << error.what() << '\n';
        return tool::ExitCode::usage;
    } catch (const std::exception& error) { // of the machine: no memory, no folder for temporary files
        std::cerr << "corvantile: " << error.what() << '\n';
        return tool::ExitCode::failed;
    }
}

} // namespace

int playMain(int argc, char** argv, PlayRegistry registry) {
    tool::StandardOutput output;
    const auto code = run(argc, argv, std::move(registry));
    return static_cast<int>(output.close(code));
}

} // namespace corvantile
