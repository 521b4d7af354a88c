#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"

namespace corvantile::tool {

namespace {

PlayRegistry::LaunchSwitches parseSwitches(Arguments arguments) {
    PlayRegistry::LaunchSwitches switches;
    for (const auto& word : arguments) {
        if (word.text != "debug" && word.text != "dry-run")
            throw UsageError(unknownName("switch", word.text, {"debug", "dry-run"}));
        (word.text == "debug" ? switches.debug : switches.dryRun) = true;
    }
    return switches;
}

} // namespace

std::vector<Command> lifeCycleCommands(Host& host) {
    const std::vector<std::string> switchHelp = {
        "debug and dry-run switch these on for this launch, whatever the app description says.",
        "In a dry run, which includes debug, events reach the first console sink only."};
    return {
        {"launch", "[SWITCH…]", "start the app's process: make its plug-ins and sinks, finish launching",
         [&host](Arguments given) { host.launch(parseSwitches(given)); }, switchHelp},
        {"activate",
         "",
         "make an inactive app active",
         [&host](Arguments) { host.activate(); },
         {},
         true,
         true},
        {"resign", "", "make an active app inactive", [&host](Arguments) { host.resign(); }},
        {"background", "", "send an inactive app to the background",
         [&host](Arguments) { host.enterBackground(); }},
        {"foreground", "", "bring an app back from the background",
         [&host](Arguments) { host.enterForeground(); }},
        {"terminate", "", "end the app's process in good order", [&host](Arguments) { host.terminate(); }},
        {"relaunch", "[SWITCH…]", "terminate the app if it runs, and launch it on the state that it left",
         [&host](Arguments given) { host.relaunch(parseSwitches(given)); }, switchHelp},
        {"wait", "DURATION", "let the app run on for a while: 500ms, 1.5s, 2m",
         [&host](Arguments given) { host.runLoop([] { return false; }, parseDuration(given[0].text)); }},
    };
}

std::vector<Command> deviceCommands(Host& host) {
    return {
        {"lock",
         "",
         "lock the keychain, as a device that was not unlocked since it was switched on",
         [&host](Arguments) { host.setKeychainLocked(true); },
         {"It stays so through relaunches until unlock or the end of the play. What a launch meanwhile costs",
          "the records is in Docs/Records.md."}},
        {"unlock", "", "unlock the keychain again", [&host](Arguments) { host.setKeychainLocked(false); }},
        {"reinstall",
         "",
         "delete the app and install it afresh: user defaults go, the keychain stays",
         [&host](Arguments) { host.reinstall(); },
         {"A running app ends at once, without willTerminate. The new one is not launched: launch does it."}},
    };
}

} // namespace corvantile::tool
