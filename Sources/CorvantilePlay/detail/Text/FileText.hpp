#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace corvantile::tool {

// The bytes of a file. A UsageError that names the file and what was `expected` of it when it cannot be read.
[[nodiscard]] std::string readFileText(const std::filesystem::path& file, std::string_view expected);

} // namespace corvantile::tool
