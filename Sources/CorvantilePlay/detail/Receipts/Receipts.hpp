#pragma once

#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace corvantile {
class PlayRegistry;
} // namespace corvantile

namespace corvantile::tool {

class CommandOutput;

struct ReceiptOptions {
    std::vector<std::filesystem::path> receipts = {};
    std::filesystem::path app = {};       // empty: none; events then have the names of products
    std::filesystem::path catalogue = {}; // empty: that of the app
    std::filesystem::path state = {};     // empty: nothing was reported before
    std::string firstDate = {};           // empty: that of the state folder, if it keeps one
    std::string now = {};                 // empty: the time of the moment
    bool json = false;
};

// What purchase analytics would make of receipts, one after the other: a line for each transaction, totals,
// revenue by month and, of an app, the sinks that get the events. It marks and sends nothing, and leaves the
// state folder as it is. `failed` when a receipt or the catalogue is invalid; a UsageError when something
// cannot be read.
[[nodiscard]] ExitCode explainReceipts(const ReceiptOptions& options, const PlayRegistry& registry,
                                       CommandOutput& output);

// What a StoreKit configuration file sells.
[[nodiscard]] ExitCode showCatalogue(const std::filesystem::path& file, CommandOutput& output);

} // namespace corvantile::tool
