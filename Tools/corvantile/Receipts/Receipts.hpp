#pragma once

#include "Tools/corvantile/ExitCode.hpp"

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace corvantile::tool {

struct ReceiptOptions {
    std::vector<std::filesystem::path> receipts = {};
    std::filesystem::path catalogue = {};
    std::filesystem::path state = {}; // empty: nothing was reported before
    std::string firstDate = {};       // empty: that of the state folder, if it keeps one
    std::string now = {};             // empty: the time of the moment
    bool json = false;
};

// What purchase analytics would make of receipts, one after the other: a line for each transaction, totals,
// and revenue by month; or one JSON object a line. It marks and sends nothing, and leaves the state folder as
// it is. `failed` when a receipt, or the catalogue, is none; a Refusal when something cannot be read.
[[nodiscard]] ExitCode explainReceipts(const ReceiptOptions& options, std::ostream& out);

// What a StoreKit configuration file sells, as a table or as one JSON object a line.
[[nodiscard]] ExitCode showCatalogue(const std::filesystem::path& file, bool json, std::ostream& out);

} // namespace corvantile::tool
