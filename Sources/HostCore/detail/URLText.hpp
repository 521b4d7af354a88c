#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>

namespace corvantile {

// The text, if it can be a URL: not empty, no character that a URL cannot hold, every per cent sign an
// escape. Otherwise a fatal error, "Invalid URL.": for addresses that are written in a program.
[[nodiscard]] CORVANTILE_API std::string urlText(std::string text, const char* file = __builtin_FILE(),
                                                 int line = __builtin_LINE());

} // namespace corvantile
