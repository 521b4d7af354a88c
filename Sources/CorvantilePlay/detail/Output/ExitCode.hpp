#pragma once

namespace corvantile::tool {

// `failed`: a command failed, or what was looked at has an error. `usage`: the call or the app description
// has one. `output`: standard output cannot be written.
enum class ExitCode { success = 0, failed = 1, usage = 2, output = 3, interrupted = 130 };

} // namespace corvantile::tool
