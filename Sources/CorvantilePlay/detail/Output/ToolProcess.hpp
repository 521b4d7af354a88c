#pragma once

#include <functional>
#include <string_view>

// How the tool's process begins and ends.
namespace corvantile::tool {

// `failed`: a command failed, or what was looked at has an error. `usage`: the call or the app description
// has one. `output`: standard output cannot be written.
enum class ExitCode { success = 0, failed = 1, usage = 2, output = 3, interrupted = 130 };

// Any exception that leaves `run` becomes a line on standard error and a status: `usage` for a UsageError,
// else `failed`. So does one that no caller can catch, since another thread or a destructor throws it; that
// one ends the process at once.
[[nodiscard]] ExitCode endingWithStatus(const std::function<ExitCode()>& run);

// Writes `corvantile: TEXT` on standard error.
void printError(std::string_view text);

// This process reads keychains. Its memory is left out of core dumps, and only the superuser may look into
// it. Does nothing in a build with sanitizers, which look into it themselves.
void forbidMemoryDumps();

// From now on the first interrupt or termination signal asks the play to end in good order; the next one
// ends the tool.
void installSignalHandler();

[[nodiscard]] bool isInterrupted();

// The program has to end soon and in good order: it was interrupted, or its output cannot be written.
[[nodiscard]] bool mustStop();

} // namespace corvantile::tool
