#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <chrono>
#include <string>

namespace corvantile {

// `2024-01-02 03:04:05.678` for `date` in a zone that is `offset` ahead of UTC; milliseconds are cut, not
// rounded. Gregorian, ASCII digits.
[[nodiscard]] CORVANTILE_API std::string timestamp(Date date, std::chrono::seconds offset);

// The same in UTC, as `2024-01-02T03:04:05.678Z`.
[[nodiscard]] CORVANTILE_API std::string isoTimestamp(Date date);

} // namespace corvantile
