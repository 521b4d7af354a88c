#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace corvantile {

// What tells a file from another of the same name, and from itself after it was written to.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t node = 0;
    std::int64_t size = 0; // bytes
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;

    // nullopt when there is none, or none to be seen.
    [[nodiscard]] static std::optional<FileIdentity> of(const std::filesystem::path& file);

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

} // namespace corvantile
