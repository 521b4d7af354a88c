#pragma once

#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

namespace corvantile {

// Gives a file that cannot be used the first free name of NAME.set-aside-1, NAME.set-aside-2 and so on, in
// its folder, and the new name. What belongs to it by name (NAME + suffix) goes with it under the new name +
// suffix. nullopt when the file could not be renamed.
std::optional<std::filesystem::path> setAside(const std::filesystem::path& file,
                                              std::initializer_list<std::string_view> suffixes = {});

// Every file that was set aside as `file` or with it, by name.
[[nodiscard]] std::vector<std::filesystem::path> filesSetAside(const std::filesystem::path& file);

} // namespace corvantile
