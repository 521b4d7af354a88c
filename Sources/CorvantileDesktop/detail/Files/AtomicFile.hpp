#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// Small files that are either there as a whole or not at all, also after a power loss, and that only the user
// can read. Threads and processes: any number at once.

enum class WriteResult { written, exists, failed };

// The bytes of a regular file; nullopt when there is none or it cannot be read.
[[nodiscard]] std::optional<std::string> readFile(const std::filesystem::path& file);

// Of two writers at once, one gets `written` and the other `exists`.
[[nodiscard]] WriteResult writeNewFile(const std::filesystem::path& file, std::string_view bytes);

[[nodiscard]] bool replaceFile(const std::filesystem::path& file, std::string_view bytes);

// Makes the folder, and those above it, unless it is there. False when that fails.
[[nodiscard]] bool makePrivateFolder(const std::filesystem::path& folder);

// What was made or renamed in the folder survives a power loss. A file system that cannot do so is no reason
// to fail.
void syncFolder(const std::filesystem::path& folder);

} // namespace corvantile
