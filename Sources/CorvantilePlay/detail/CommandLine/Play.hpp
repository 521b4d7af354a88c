#pragma once

#include "CorvantilePlay/PlayRegistry.hpp"
#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

#include <filesystem>

namespace corvantile::tool {

struct PlayOptions {
    std::filesystem::path app = {};    // empty: the sample app
    std::filesystem::path state = {};  // empty: the app's own
    std::filesystem::path script = {}; // empty: standard input
    PlayRegistry::LaunchSwitches switches = {};
    bool hasServer = false;
    bool isFresh = false; // deletes the app's state first
    bool json = false;
};

// Plays commands from a script, which the first failure ends, or from standard input: a prompt on a terminal,
// else a pipe, where a failure is remembered and the play goes on. A UsageError when it cannot begin.
[[nodiscard]] ExitCode play(const PlayOptions& options, const PlayRegistry& registry);

// Plays the sample app's tour, on a state that does not last; on a terminal one can then go on.
[[nodiscard]] ExitCode playTour(const PlayRegistry& registry);

} // namespace corvantile::tool
