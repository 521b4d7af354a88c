#include "CorvantilePlay/detail/CommandLine/PrintManual.hpp"

#include "CorvantilePlay/detail/CommandLine/Completion.hpp"
#include "CorvantilePlay/detail/CommandLine/Manual.hpp"
#include "CorvantilePlay/detail/Commands/Engine.hpp"

#include <ostream>

namespace corvantile::tool {

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
