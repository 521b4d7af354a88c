#pragma once

#include "CorvantileLocalStore/Engine/detail/StoreLedger.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <optional>
#include <set>
#include <string>

namespace corvantile {

// The store's account of what was bought, as JSON in the shape of the real store's; nullopt before anything
// was. Consumables that are finished, or `hidden`, are left out.
[[nodiscard]] std::optional<std::string> receiptJSON(const StoreLedger& ledger,
                                                     const std::string& bundleIdentifier, Date now,
                                                     const std::set<std::string>& hidden = {});

// What lies at the bundle's receipt location: bytes that mean nothing to an app, other ones after each
// purchase. Empty before anything was bought.
[[nodiscard]] std::string receiptBytes(const StoreLedger& ledger, const std::string& bundleIdentifier);

} // namespace corvantile
