#include "CorvantilePlay/detail/Commands/CommandTable.hpp"

#include "CorvantilePlay/detail/Text/TerminalText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace corvantile::tool {

namespace {

struct ArgumentCounts {
    std::vector<std::string> required;
    std::size_t optional = 0;
    bool isOpen = false; // any number more
};

ArgumentCounts countsOf(const std::string& arguments) {
    ArgumentCounts counts;
    std::istringstream stream(arguments);
    for (std::string argument; stream >> argument;) {
        if (argument.find("…") != std::string::npos) counts.isOpen = true;
        if (argument.front() == '[')
            ++counts.optional;
        else
            counts.required.push_back(argument);
    }
    return counts;
}

} // namespace

std::string Command::usage() const { return arguments.empty() ? name : name + " " + arguments; }

void Command::checkCount(Arguments given) const {
    const auto counts = countsOf(arguments);
    const auto required = counts.required.size();
    if (given.size() < required)
        throw UsageError(name + " wants " + counts.required[given.size()] + ": " + usage());
    if (!counts.isOpen && given.size() > required + counts.optional)
        throw UsageError(name + " does not want \"" + shortened(given[required + counts.optional].text) +
                         "\": " + usage());
}

void CommandTable::add(std::vector<Command> commands) {
    std::move(commands.begin(), commands.end(), std::back_inserter(commands_));
}

const Command& CommandTable::find(std::string_view name) const {
    const auto found = std::find_if(commands_.begin(), commands_.end(),
                                    [&](const Command& command) { return command.name == name; });
    if (found != commands_.end()) return *found;
    Names names;
    for (const auto& command : commands_) names.push_back(command.name);
    const auto nearest = nearestName(name, names);
    throw UsageError("there is no command \"" + shortened(name) +
                     (nearest.empty() ? "\"; help lists them all" : "\": did you mean " + nearest + "?"));
}

} // namespace corvantile::tool
