#pragma once

#include "CorvantilePlatform/Foundation/Date.hpp"

#include <optional>
#include <string_view>

namespace corvantile {

// A date in any of the store's forms: `1604851257000` (milliseconds since 1970), `2020-11-08 16:00:57
// Etc/GMT`, the same in `America/Los_Angeles`, with `T`, `Z` or `+0100` as other systems write it; without a
// zone it is UTC. nullopt for anything else. An hour that comes twice as summer ends is the first one.
[[nodiscard]] std::optional<Date> readStoreDate(std::string_view text);

// Milliseconds since 1970; nullopt for what no calendar has.
[[nodiscard]] std::optional<Date> readStoreMilliseconds(double milliseconds);

} // namespace corvantile
