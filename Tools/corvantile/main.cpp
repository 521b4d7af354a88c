#include "CorvantilePlay/detail/CommandLine/CommandLine.hpp"
#include "CorvantilePlay/detail/Output/Interruption.hpp"
#include "CorvantilePlay/detail/Output/StandardOutput.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

namespace tool = corvantile::tool;

namespace {

tool::ExitCode run(int argc, char** argv) {
    CLI::App app;
    tool::Call call;
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

int main(int argc, char** argv) {
    tool::StandardOutput output;
    const auto code = run(argc, argv);
    return static_cast<int>(output.close(code));
}
