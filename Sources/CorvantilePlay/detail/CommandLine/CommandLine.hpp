#pragma once

#include "CorvantilePlay/detail/CommandLine/Play.hpp"
#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/detail/Output/ToolProcess.hpp"
#include "CorvantilePlay/detail/Proof/Prove.hpp"
#include "CorvantilePlay/detail/Proof/ScenarioPlay.hpp"
#include "CorvantilePlay/detail/Receipts/Receipts.hpp"

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

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

// Print the man page of the command line, and what a shell completes of it.
[[nodiscard]] ExitCode printManual(const CLI::App& app, std::string_view version, std::ostream& stream);
[[nodiscard]] ExitCode printCompletion(const CLI::App& app, const std::string& shell, std::ostream& stream);

} // namespace corvantile::tool
