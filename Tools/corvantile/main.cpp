#include "Tools/corvantile/Play.hpp"

#include <CLI/CLI.hpp>

#include <string>

namespace tool = corvantile::tool;

int main(int argc, char** argv) {
    CLI::App app(
        "Plays the phone around an app that is built on Corvantile. Without a command it plays the tour "
        "of the sample app.",
        "corvantile");
    app.set_version_flag("--version", "corvantile " CORVANTILE_VERSION);
    app.require_subcommand(0, 1);

    tool::PlayOptions options;
    std::string folder, state, script;
    auto* const play =
        app.add_subcommand("play", "Play commands from a script, a pipe or a prompt; `help` lists them");
    play->add_option("--app", folder, "Folder with the app's description, app.json (default: the sample app)")
        ->type_name("FOLDER");
    play->add_option("--state", state, "Folder for what outlives the app (default: the user's state folder)")
        ->type_name("FOLDER");
    play->add_option("--script", script, "Commands, one a line; the first failure ends the play")
        ->type_name("FILE");
    play->add_flag("--debug", options.switches.debug, "Switch debug on, whatever the description says");
    play->add_flag("--dry-run", options.switches.dryRun,
                   "Let events reach the first console sink only; includes --debug");
    play->add_flag("--json", options.json, "Show each happening as one JSON object a line");
    play->footer(
        "Exit codes: 0 all went well, 1 a command failed, 2 the call or the app description is at fault.");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : static_cast<int>(tool::ExitCode::usage);
    }
    options.app = folder;
    options.state = state;
    options.script = script;
    return static_cast<int>(play->parsed() ? tool::play(options) : tool::playTour());
}
