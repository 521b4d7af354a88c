#pragma once

#include "CorvantilePlay/detail/Commands/CommandTable.hpp"

#include <vector>

// The commands in groups, each in a source of its own. They borrow the host.
namespace corvantile::tool {

class Host;

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
