#pragma once

#include "CorvantilePlay/detail/Output/ExitCode.hpp"

#include <iosfwd>
#include <string>
#include <string_view>

namespace CLI {
class App;
} // namespace CLI

namespace corvantile::tool {

// Print the man page of the command line, and what a shell completes of it.
[[nodiscard]] ExitCode printManual(const CLI::App& app, std::string_view version, std::ostream& stream);
[[nodiscard]] ExitCode printCompletion(const CLI::App& app, const std::string& shell, std::ostream& stream);

} // namespace corvantile::tool
