#pragma once

namespace corvantile::tool {

// `failed`: a command failed, or what was looked at has an error. `usage`: the call or the app description
// has one. `output`: standard output cannot be written.
enum class ExitCode { success = 0, failed = 1, usage = 2, output = 3, interrupted = 130 };

// From now on the first interrupt or termination signal asks the play to end in good order; the next one
// ends the tool.
void installSignalHandler();

[[nodiscard]] bool isInterrupted();

// The program has to end soon and in good order: it was interrupted, or its output cannot be written.
[[nodiscard]] bool mustStop();

} // namespace corvantile::tool
