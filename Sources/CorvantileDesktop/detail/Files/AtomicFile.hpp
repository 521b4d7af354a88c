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
// The same; `error` is the error number when there are none.
[[nodiscard]] std::optional<std::string> readFile(const std::filesystem::path& file, int& error);
// There is no such file, rather than one that cannot be read.
[[nodiscard]] bool isMissing(int error);

// Of two writers at once, one gets `written` and the other `exists`.
[[nodiscard]] WriteResult writeNewFile(const std::filesystem::path& file, std::string_view bytes);

[[nodiscard]] bool replaceFile(const std::filesystem::path& file, std::string_view bytes);

// Deletes what processes that were killed while they wrote one of these files have left beside it.
void removeAbandonedFiles(const std::filesystem::path& file);

// Makes the folder, and those above it, unless it is there. False when that fails.
[[nodiscard]] bool makePrivateFolder(const std::filesystem::path& folder);

// What was made or renamed in the folder survives a power loss. A file system that cannot do so is no reason
// to fail.
void syncFolder(const std::filesystem::path& folder);

} // namespace corvantile
