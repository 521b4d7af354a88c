#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace corvantile::tool {

// What the scenario has left once it has settled.
struct ProofVerdict {
    // What never came of the one transaction that may lose events: `event renew_pro`, or
    // `event renew_pro (file)` where only that sink lacks it.
    std::vector<std::string> lost = {};
    // What came twice of the one transaction that may, under the second promise; named likewise.
    std::vector<std::string> repeated = {};
    int gracePeriodReports = 0; // in the outbox
    // Broken promises, for people; none when all is well.
    std::vector<std::string> faults = {};
};

// Reads outbox, sink file, keychain, user defaults and records. The first promise: nothing twice, and events
// of at most one transaction lost. The second, `atLeastOnce`: nothing lost, and events of at most one twice.
// Threads: a main thread on which no platform is installed.
[[nodiscard]] ProofVerdict judge(const std::filesystem::path& folder, bool atLeastOnce);

} // namespace corvantile::tool
