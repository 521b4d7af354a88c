#include "CorvantilePlay/detail/CommandLine/CommandLine.hpp"

#include "CorvantilePlatform/Version.hpp"
#include "CorvantilePlay/detail/CommandLine/Completion.hpp"
#include "CorvantilePlay/detail/CommandLine/Manual.hpp"
#include "CorvantilePlay/detail/Commands/Engine.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Output/StandardOutput.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <CLI/CLI.hpp>

#include <iostream>

namespace corvantile::tool {

namespace {

constexpr const char* appHelp = "Folder with the app's description, app.json (default: the sample app)";
constexpr const char* stateHelp =
    "Folder for what outlives the app (default: the app's own, under the user's state folder)";
constexpr const char* jsonHelp = "One JSON object a line; the first names the format's version";

// Sets what `run` does when the subcommand is called: `act` gets the output that goes with the format.
template <class Act>
void setAction(CLI::App& command, Call& call, const bool& json, Act act) {
    command.callback([&call, &json, act] {
        call.run = [&json, act] {
            CommandOutput output({std::cout, std::cerr, areStandardStreamsOne()}, json);
            return act(output);
        };
    });
}

void addPlay(CLI::App& app, Call& call) {
    auto& options = call.play;
    auto* const command =
        app.add_subcommand("play", "Play commands from a script, a pipe or a prompt; `help` lists them");
    command->add_option("--app", options.app, appHelp)->type_name("FOLDER");
    command->add_option("--state", options.state, stateHelp)->type_name("FOLDER");
    command->add_flag("--fresh", options.isFresh,
                      "Delete the app's state first: records, keychain, outbox and store");
    command->add_option("--script", options.script, "Commands, one a line; the first failure ends the play")
        ->type_name("FILE");
    command->add_flag("--debug", options.switches.debug, "Switch debug on, whatever the description says");
    command->add_flag("--dry-run", options.switches.dryRun,
                      "Let events reach the first console sink only; includes --debug");
    command->add_flag("--server", options.hasServer,
                      "Play the attribution services on this machine, instead of any other endpoint");
    command->add_flag("--json", options.json, jsonHelp);
    command->footer(
        "Exit codes: 0 all went well, 1 a command failed, 2 the call or the app description has an "
        "error, 3 standard output cannot be written, 130 interrupted.");
    command->callback([&call] { call.run = [&call] { return play(call.play, call.registry); }; });
}

using Show = ExitCode (*)(const InspectOptions&, const PlayRegistry&, CommandOutput&);

CLI::App* addInspection(CLI::App& app, Call& call, const char* name, const char* help, Show show) {
    auto& options = call.inspect;
    auto* const command = app.add_subcommand(name, help);
    command->add_option("--app", options.app, appHelp)->type_name("FOLDER");
    command->add_option("--state", options.state, stateHelp)->type_name("FOLDER");
    command->add_flag("--json", options.json, jsonHelp);
    command->footer(
        "The state is not changed. Exit codes: 0 all is well, 1 something is wrong or cannot be read, 2 "
        "the call has an error, 3 standard output cannot be written.");
    setAction(*command, call, options.json,
              [&call, show](CommandOutput& output) { return show(call.inspect, call.registry, output); });
    return command;
}

void addReceipts(CLI::App& app, Call& call) {
    auto& options = call.receipts;
    auto* const command = app.add_subcommand(
        "receipts", "Explain what purchase analytics makes of receipts, the store's JSON; nothing is sent");
    command->add_option("receipts", options.receipts, "Receipts, handed in one after the other")
        ->type_name("FILE")
        ->required();
    command
        ->add_option("--app", options.app,
                     "Folder with the description of the app that reports them, app.json")
        ->type_name("FOLDER");
    command
        ->add_option("--catalogue", options.catalogue,
                     "StoreKit configuration file with the products (default: the app's)")
        ->type_name("FILE");
    command->add_option("--first-date", options.firstDate, "Nothing bought before it counts")
        ->type_name("DATE");
    command->add_option("--state", options.state, "An app's state folder, for what was reported before")
        ->type_name("FOLDER");
    command->add_option("--now", options.now, "When it is (default: now)")->type_name("DATE");
    command->add_flag("--json", options.json, jsonHelp);
    command->footer(
        "Exit codes: 0 all is well, 1 a receipt or the catalogue is invalid, 2 the call has an error or a "
        "file cannot be read, 3 standard output cannot be written.");
    setAction(*command, call, options.json, [&call](CommandOutput& output) {
        return explainReceipts(call.receipts, call.registry, output);
    });
}

void addCatalogue(CLI::App& app, Call& call) {
    auto& options = call.receipts;
    auto* const command = app.add_subcommand("catalogue", "Show what a StoreKit configuration file sells");
    command->add_option("file", options.catalogue, "StoreKit configuration file")
        ->type_name("FILE.storekit")
        ->required();
    command->add_flag("--json", options.json, jsonHelp);
    command->footer(
        "Exit codes: 0 all is well, 1 the file is no catalogue, 2 the call has an error or the file cannot "
        "be read, 3 standard output cannot be written.");
    setAction(*command, call, options.json,
              [&options](CommandOutput& output) { return showCatalogue(options.catalogue, output); });
}

void addProve(CLI::App& app, Call& call) {
    auto* const command =
        app.add_subcommand("prove", "Kill an app at each moment of its purchases, and show what that loses");
    command->add_flag("--short", call.prove.isShort, "At every third moment only");
    command->add_flag("--at-least-once", call.prove.atLeastOnce,
                      "Of an app that chose the promise to lose no event, and may send some twice");
    command->add_flag("--json", call.prove.json, jsonHelp);
    command->footer(
        "Exit codes: 0 the promises of purchase analytics hold, 1 one is broken, 3 standard output cannot "
        "be written, 130 interrupted.");
    setAction(*command, call, call.prove.json,
              [&call](CommandOutput& output) { return prove(call.prove, output); });

    // What `prove` calls the tool with; nothing for people.
    auto* const process = app.add_subcommand("prove-process")->group("");
    process->add_option("--folder", call.scenario.folder)->required();
    process->add_option("--catalogue", call.scenario.catalogue)->required();
    process->add_option("--kill", call.scenario.kill);
    process->add_option("--moments", call.scenario.moments);
    process->add_flag("--at-least-once", call.scenario.atLeastOnce);
    process->callback([&call] { call.run = [&call] { return playScenario(call.scenario); }; });
}

// What the build makes the man page and the shells' completions with; nothing for people.
void addManual(CLI::App& app, Call& call) {
    app.add_subcommand("print-manual")->group("")->callback([&app, &call] {
        call.run = [&app] { return printManual(app, CORVANTILE_VERSION, std::cout); };
    });
    auto* const completion = app.add_subcommand("print-completion")->group("");
    completion->add_option("shell", call.shell)->required();
    completion->callback(
        [&app, &call] { call.run = [&app, &call] { return printCompletion(app, call.shell, std::cout); }; });
}

} // namespace

void buildCommandLine(CLI::App& app, Call& call) {
    app.name("corvantile");
    app.description(
        "Plays the phone around an app that is built on Corvantile. Without a command it plays the "
        "tour of the sample app.");
    app.set_version_flag("--version", "corvantile " CORVANTILE_VERSION);
    app.require_subcommand(0, 1);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "corvantile: " + visibleLine(error.what()) + "; corvantile --help lists what there is\n";
    });
    addPlay(app, call);
    addInspection(app, call, "records", "Show what the app has stored, records decrypted", showRecords);
    addInspection(app, call, "keychain", "Show what the app's keychain holds", showKeychain)
        ->add_flag("--reveal", call.inspect.reveal, "Show the values too, which are secrets");
    addInspection(app, call, "outbox", "Show what waits to be delivered, and what was delivered lately",
                  showOutbox);
    addInspection(app, call, "doctor", "Say what is in order in the app's state folder, and what is not",
                  showHealth);
    addProve(app, call);
    addReceipts(app, call);
    addCatalogue(app, call);
    addManual(app, call);
    app.footer(referenceText());
}

ExitCode printManual(const CLI::App& app, std::string_view version, std::ostream& stream) {
    // The commands are those of any app: this one has nothing, and is never launched.
    AppDescription none;
    none.bundleIdentifier = "none";
    const Engine engine(none, {}, [](const PlayEvent&) {});
    stream << makeManual(describeCommandLine(app), engine.commands().commands(),
                         "corvantile " + std::string(version));
    return ExitCode::success;
}

ExitCode printCompletion(const CLI::App& app, const std::string& shell, std::ostream& stream) {
    stream << makeCompletion(describeCommandLine(app), shell);
    return ExitCode::success;
}

} // namespace corvantile::tool
