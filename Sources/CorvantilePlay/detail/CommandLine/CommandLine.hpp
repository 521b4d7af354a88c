#pragma once

#include "CorvantilePlay/detail/CommandLine/Play.hpp"
#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/detail/Output/ExitCode.hpp"
#include "CorvantilePlay/detail/Proof/Prove.hpp"
#include "CorvantilePlay/detail/Proof/ScenarioPlay.hpp"
#include "CorvantilePlay/detail/Receipts/Receipts.hpp"

#include <functional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace corvantile::tool {

// What the arguments ask for. Parsing fills it in; `run` then does it.
struct Call {
    PlayRegistry registry;
    PlayOptions play = {};
    InspectOptions inspect = {};
    ProveOptions prove = {};
    ScenarioOptions scenario = {};
    ReceiptOptions receipts = {};
    std::string shell = {}; // whose completion is printed
    std::function<ExitCode()> run = [this] { return playTour(registry); };
};

// Adds every subcommand and option to `app`, a fresh CLI::App. The callbacks refer to `call`, which has to
// outlive the parsing.
void buildCommandLine(CLI::App& app, Call& call);

} // namespace corvantile::tool
