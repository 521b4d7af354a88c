#pragma once

#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

namespace corvantile {

// Moves an unusable file aside: renames it to the first free name of NAME.set-aside-1, NAME.set-aside-2 and
// so on in its folder, and returns the new name. Companions (NAME + suffix) get the new name + suffix.
// nullopt when renaming failed or nothing is there.
std::optional<std::filesystem::path> quarantine(const std::filesystem::path& file,
                                                std::initializer_list<std::string_view> suffixes = {});

// Moves companions after a file that was moved aside without them, and returns its name; nullopt when none
// was.
std::optional<std::filesystem::path> finishQuarantine(const std::filesystem::path& file,
                                                      std::initializer_list<std::string_view> suffixes);

// The name that `quarantine` would give the file.
[[nodiscard]] std::filesystem::path nextQuarantineName(const std::filesystem::path& file,
                                                       std::initializer_list<std::string_view> suffixes);

// Every file that was moved aside from `file` or as its companion, sorted by name.
[[nodiscard]] std::vector<std::filesystem::path> quarantinedFiles(const std::filesystem::path& file);

} // namespace corvantile
