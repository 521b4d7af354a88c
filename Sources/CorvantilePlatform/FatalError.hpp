#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string_view>

namespace corvantile {

// Ends the process: prints `Corvantile/FILESTEM:LINE: Fatal error: MESSAGE` on standard error, then aborts.
// File and line are the caller's. For wiring mistakes of the host only, never for values from a platform.
// Threads: any.
[[noreturn]] CORVANTILE_API void fatalError(std::string_view message, const char* file = __builtin_FILE(),
                                            int line = __builtin_LINE());

// The same where the place named is part of the contract. `stem` comes without folder and ending.
[[noreturn]] CORVANTILE_API void fatalErrorAt(std::string_view stem, int line, std::string_view message);

// What an unavailable argument-less constructor does. `className` comes without the module's name.
[[noreturn]] CORVANTILE_API void unimplementedInitializer(std::string_view className,
                                                          const char* file = __builtin_FILE(),
                                                          int line = __builtin_LINE());

} // namespace corvantile
