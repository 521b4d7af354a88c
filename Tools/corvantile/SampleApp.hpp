#pragma once

#include <filesystem>

namespace corvantile::tool {

// The folder of the sample app that belongs to this executable, whether it stands in a build tree or where it
// was installed. A Refusal when it is nowhere to be found.
[[nodiscard]] std::filesystem::path sampleAppFolder();

} // namespace corvantile::tool
