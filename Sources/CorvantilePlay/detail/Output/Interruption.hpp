#pragma once

namespace corvantile::tool {

// From now on the first interrupt or termination signal asks the play to end in good order; the next one
// ends the tool.
void installSignalHandler();

[[nodiscard]] bool isInterrupted();

// The program has to end soon and in good order: it was interrupted, or its output cannot be written.
[[nodiscard]] bool mustStop();

} // namespace corvantile::tool
