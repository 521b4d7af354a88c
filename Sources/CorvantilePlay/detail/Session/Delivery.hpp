#pragma once

#include <map>
#include <string>

namespace corvantile {
struct AdjustOptions;
} // namespace corvantile

namespace corvantile::tool {

// For a dry run, which holds no subscription back: a UsageError when packages would leave this machine.
void requireLocalDelivery(const AdjustOptions& options, const std::map<std::string, std::string>& routes);

} // namespace corvantile::tool
