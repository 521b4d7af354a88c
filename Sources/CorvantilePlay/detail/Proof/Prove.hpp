#pragma once

#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

namespace corvantile::tool {

class CommandOutput;

struct ProveOptions {
    bool isShort = false;     // some of the moments
    bool json = false;        // one object a line
    bool atLeastOnce = false; // about the second promise
};

// Plays the purchase scenario in processes of its own and kills one at each moment before and after something
// that it writes; another then goes on from what it left. Shows what was lost at which moment. `failed` when
// a promise of the purchase analytics is broken. A UsageError when it cannot begin.
[[nodiscard]] ExitCode prove(const ProveOptions& options, CommandOutput& output);

} // namespace corvantile::tool
