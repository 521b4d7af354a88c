#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace corvantile::tool {

// What help shows of an option, or of an argument without a name of its own.
struct OptionText {
    std::vector<std::string> names = {}; // `-h`, `--help`; empty for a positional argument
    std::string value = {};              // what stands for its value, `FOLDER`; empty for a flag
    std::string help = {};
    bool isRequired = false;

    friend bool operator==(const OptionText&, const OptionText&) = default;
};

struct SubcommandText {
    std::string name = {};
    std::string help = {};
    std::string footer = {};
    std::vector<OptionText> options = {};
};

// The command line as its help describes it: what the man page and the shells' completions are made from.
struct CommandLineText {
    SubcommandText tool = {}; // the call without a subcommand
    std::vector<SubcommandText> subcommands = {};
};

// Without hidden subcommands and options.
[[nodiscard]] CommandLineText describeCommandLine(const CLI::App& app);

} // namespace corvantile::tool
