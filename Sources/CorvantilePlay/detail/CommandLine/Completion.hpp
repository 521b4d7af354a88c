#pragma once

#include "CorvantilePlay/detail/CommandLine/CommandLineText.hpp"

#include <string>
#include <string_view>

namespace corvantile::tool {

// The script by which the shell (`bash`, `zsh`, `fish`) completes subcommands, options, folders and files. A
// UsageError for another shell.
[[nodiscard]] std::string makeCompletion(const CommandLineText& commandLine, std::string_view shell);

} // namespace corvantile::tool
