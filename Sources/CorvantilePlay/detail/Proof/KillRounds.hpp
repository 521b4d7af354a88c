#pragma once

#include "CorvantilePlay/detail/Proof/ProofVerdict.hpp"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace corvantile::tool {

// What became of one kill.
struct KillRound {
    std::size_t number = 0; // of the moment, from 1
    std::string moment = {};
    ProofVerdict verdict = {};
};

// Kills and settles, two processes at once, in a temporary folder. Threads: a main thread on which no
// platform is installed.
class KillRounds {
public:
    // What follows is in that folder, which is there. `atLeastOnce`: about the second promise.
    KillRounds(std::filesystem::path folder, bool atLeastOnce);

    // Plays without a kill. Its verdict has faults when the scenario itself does not do what is expected.
    [[nodiscard]] ProofVerdict rehearse();
    // The moments of the rehearsal, in order.
    [[nodiscard]] const std::vector<std::string>& moments() const { return moments_; }

    // Kills once at each `step`th moment, and calls `judged` with each round, in order. Ends early when
    // interrupted.
    void run(std::size_t step, const std::function<void(const KillRound& round)>& judged);

private:
    struct Running;
    [[nodiscard]] std::vector<std::string> arguments(const std::filesystem::path& folder) const;
    [[nodiscard]] std::filesystem::path folderOf(const KillRound& round) const;

    [[nodiscard]] ProofVerdict verdictOn(const std::filesystem::path& folder,
                                         std::optional<int> exitCode) const;

    const std::filesystem::path folder_;
    const bool atLeastOnce_;
    std::vector<std::string> moments_;
};

} // namespace corvantile::tool
