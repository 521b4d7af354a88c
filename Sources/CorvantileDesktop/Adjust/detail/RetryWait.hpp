#pragma once

#include <chrono>

namespace corvantile {

// How long a package waits after having failed `failures` times in a row (from 1): twice as long each time,
// up to a limit, times `fraction`, which scatters the apps that a server has lost together. The first session
// of an installation has short waits to begin with, since an install counts from it.
[[nodiscard]] std::chrono::milliseconds waitAfter(int failures, bool isFirstSession, double fraction);

} // namespace corvantile
