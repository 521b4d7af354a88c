#include "Tools/corvantile/CommandLine.hpp"
#include "Tools/corvantile/Interruption.hpp"
#include "Tools/corvantile/Refusal.hpp"

#include <CLI/CLI.hpp>

#include <iostream>

namespace tool = corvantile::tool;

int main(int argc, char** argv) {
    CLI::App app;
    tool::Call call;
    tool::buildCommandLine(app, call);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : static_cast<int>(tool::ExitCode::usage);
    }
    tool::heedInterruption();
    try {
        return static_cast<int>(call.run());
    } catch (const tool::Refusal& refusal) {
        std::cerr << "corvantile: " << refusal.what() << '\n';
        return static_cast<int>(tool::ExitCode::usage);
    }
}
