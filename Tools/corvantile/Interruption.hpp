#pragma once

namespace corvantile::tool {

// From now on the first interrupt or termination signal asks the play to end in good order; the next one
// ends the tool.
void heedInterruption();

[[nodiscard]] bool isInterrupted();

} // namespace corvantile::tool
