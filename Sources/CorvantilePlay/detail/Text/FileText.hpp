#pragma once

#include "CorvantileDesktop/detail/Files/Descriptor.hpp"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

// Files that the user names. They may be anything: a folder, a device that never ends. One that cannot be
// read is a UsageError that names it and what was `expected` of it.
namespace corvantile::tool {

// More is no file that the tool is meant for.
inline constexpr std::size_t longestFile = 64 * 1024 * 1024;

[[nodiscard]] std::string readFileText(const std::filesystem::path& file, std::string_view expected);

[[nodiscard]] Descriptor openFile(const std::filesystem::path& file, std::string_view expected);

} // namespace corvantile::tool
