#pragma once

#include "CorvantileDesktop/detail/Files/Descriptor.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace corvantile {

// Distinguishes a file from another of the same name, and from itself after a write.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t node = 0;
    std::int64_t size = 0; // bytes
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;

    // nullopt when the file is missing or cannot be examined.
    [[nodiscard]] static std::optional<FileIdentity> of(const std::filesystem::path& file);

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// A folder that belongs to the user and is closed to everybody else; what is in it is safe from other users.
// Errors: NSError that says what to put right.
class PrivateFolder {
public:
    // nullopt when it is not there; throws when it is not private.
    [[nodiscard]] static std::optional<PrivateFolder> find(const std::filesystem::path& path);
    // Makes it, and those above it, unless it is there; its name outlives a power loss.
    [[nodiscard]] static PrivateFolder make(const std::filesystem::path& path);

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    // The bytes of a file in it, at most `limit`, or nullopt when there is none. Throws when it is no plain
    // file, another user's, or open to others.
    [[nodiscard]] std::optional<std::string> readPrivateFile(const std::string& name,
                                                             std::size_t limit) const;

    // Held until the descriptor closes: one process or thread at a time. Throws after a bounded wait.
    [[nodiscard]] Descriptor lock() const;

private:
    PrivateFolder(std::filesystem::path path, Descriptor folder);

    std::filesystem::path path_;
    Descriptor folder_;
};

} // namespace corvantile
