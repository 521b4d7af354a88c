#pragma once

#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

#include <filesystem>
#include <string>

namespace corvantile::tool {

// One process of the proof's app, which plays the scenario on from where the ones before were cut off.
struct ScenarioOptions {
    std::filesystem::path folder = {};    // holds what lasts
    std::filesystem::path catalogue = {}; // the scenario's
    std::string kill = {};                // the moment that is its last; empty: it ends in good order
    std::filesystem::path moments = {};   // the file in which each moment is noted; empty: none
    bool atLeastOnce = false;             // the second promise of purchase analytics
};

// What lasts, in the scenario's folder.
[[nodiscard]] inline std::filesystem::path stateIn(const std::filesystem::path& folder) {
    return folder / "state";
}
[[nodiscard]] inline std::filesystem::path sinkFileIn(const std::filesystem::path& folder) {
    return folder / "sink.txt";
}

// Throws when something that had to happen does not.
[[nodiscard]] ExitCode playScenario(const ScenarioOptions& options);

} // namespace corvantile::tool
