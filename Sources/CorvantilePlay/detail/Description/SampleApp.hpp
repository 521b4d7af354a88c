#pragma once

#include "CorvantilePlay/detail/Description/AppDescription.hpp"

#include <filesystem>

namespace corvantile::tool {

// The folder of the sample app that belongs to this executable, whether it stands in a build tree or where it
// was installed. A UsageError when it is nowhere to be found.
[[nodiscard]] std::filesystem::path sampleAppFolder();

// The description in `folder`, or the sample app's if that is empty.
[[nodiscard]] AppDescription readApp(const std::filesystem::path& folder);

} // namespace corvantile::tool
