#pragma once

#include "CorvantilePlay/detail/CommandLine/CommandLineText.hpp"
#include "CorvantilePlay/detail/Commands/CommandTable.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

// Something outside the tool that it reads or writes: an environment variable, a file.
struct Reference {
    std::string_view name;
    std::string_view text;
};

[[nodiscard]] const std::vector<Reference>& environmentVariables();
[[nodiscard]] const std::vector<Reference>& files();

// The same, as a paragraph under `--help`.
[[nodiscard]] std::string referenceText();

// The man page, as roff with the `man` macros. `commands` are those of a play.
[[nodiscard]] std::string makeManual(const CommandLineText& commandLine, const std::vector<Command>& commands,
                                     std::string_view version);

} // namespace corvantile::tool
