#pragma once

#include "CorvantileDesktop/Foundation/detail/Descriptor.hpp"

namespace corvantile {

// Locks an open file or folder against other processes until it is closed. Waits up to five seconds for
// whoever holds it. Returns 0, or what errno tells: EWOULDBLOCK when it is held still.
[[nodiscard]] int lockFile(const Descriptor& file);

} // namespace corvantile
