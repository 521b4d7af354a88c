#pragma once

namespace corvantile::tool {

// What the tool leaves to whoever called it. `failed`: a command, or what was looked at, is at fault;
// `usage`: the call or the app description is.
enum class ExitCode { success = 0, failed = 1, usage = 2, interrupted = 130 };

} // namespace corvantile::tool
