#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>

namespace corvantile {

// What every value that JSON cannot hold, and every text that does not hold what it should, ends in: an
// NSError.
[[noreturn]] CORVANTILE_API void throwJSONError(std::string why);

} // namespace corvantile
