#pragma once

#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/Words.hpp"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

// What follows a command's name.
using Arguments = std::span<const Word>;

struct Command {
    std::string name;
    std::string arguments; // `NAME AMOUNT`; what may be missing stands last, in brackets; `…` is any number
    std::string help;      // one line
    std::function<void(Arguments)> run; // throws a UsageError, having done nothing
    std::vector<std::string> details = {};
    bool isEchoed = true;    // false: what it tells shows the command well enough
    bool reachesFar = false; // what follows of it comes by way of background queues

    [[nodiscard]] std::string usage() const;
    // Refuses too few or too many words.
    void checkCount(Arguments given) const;
};

// All that a play understands: what parsing, help and suggestions share.
class CommandTable {
public:
    void add(std::vector<Command> commands);

    [[nodiscard]] const std::vector<Command>& commands() const { return commands_; }
    // Refuses an unknown name, and says which was meant.
    [[nodiscard]] const Command& find(std::string_view name) const;

private:
    std::vector<Command> commands_;
};

class Host;

// The commands in groups. They borrow the host.
[[nodiscard]] std::vector<Command> lifeCycleCommands(Host& host);
[[nodiscard]] std::vector<Command> trackingCommands(Host& host);
[[nodiscard]] std::vector<Command> storageCommands(Host& host);
[[nodiscard]] std::vector<Command> attributionCommands(Host& host);
[[nodiscard]] std::vector<Command> purchaseCommands(Host& host);
[[nodiscard]] std::vector<Command> storeCommands(Host& host);
[[nodiscard]] std::vector<Command> storeViewCommands(Host& host);
[[nodiscard]] std::vector<Command> deviceCommands(Host& host);
[[nodiscard]] std::vector<Command> serverCommands(Host& host);
[[nodiscard]] std::vector<Command> inspectionCommands(Host& host);

} // namespace corvantile::tool
