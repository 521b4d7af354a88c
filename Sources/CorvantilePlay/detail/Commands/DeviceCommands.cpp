#include "CorvantilePlay/detail/Commands/Commands.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"

namespace corvantile::tool {

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
