#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"

namespace corvantile {

/// The command-line host, for the kinds of `registry`: plays an app from its description, inspects its state,
/// explains receipts. Call it from `main`, once, with no platform installed; returns the exit code.
[[nodiscard]] CORVANTILE_API int playMain(int argc, char** argv, PlayRegistry registry);

} // namespace corvantile
