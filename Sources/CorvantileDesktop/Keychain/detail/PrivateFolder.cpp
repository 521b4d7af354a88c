#include "CorvantileDesktop/Keychain/detail/PrivateFolder.hpp"

#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"

#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace corvantile {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& why) { throw keychainError(KeychainStatus::notAvailable, why); }

[[noreturn]] void refuseWithCause(const std::string& what) {
    const int cause = errno;
    throw keychainError(cause == ENOSPC ? KeychainStatus::diskFull : KeychainStatus::io,
                        what + ": " + std::strerror(cause) + ".");
}

void requirePrivate(int descriptor, mode_t type, const std::string& name, const char* permissions) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) refuseWithCause("Cannot look at " + name);
    if ((status.st_mode & S_IFMT) != type) refuse(name + " is not a file.");
    if (status.st_uid != ::geteuid()) refuse("Another user owns " + name + ".");
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        refuse("Others can open " + name + ": its permissions must be " + permissions + ".");
}

std::string readAtMost(int descriptor, std::size_t limit, const std::string& name) {
    std::string bytes(limit, '\0');
    std::size_t size = 0;
    while (size < limit) {
        const auto count = ::read(descriptor, bytes.data() + size, limit - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) refuseWithCause("Cannot read " + name);
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    bytes.resize(size);
    return bytes;
}

} // namespace

std::optional<FileIdentity> FileIdentity::of(const fs::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
                        status.st_mtim.tv_nsec};
}

PrivateFolder::PrivateFolder(fs::path path, Descriptor folder)
    : path_(std::move(path)), folder_(std::move(folder)) {}

std::optional<PrivateFolder> PrivateFolder::find(const fs::path& path) {
    if (path.empty()) return std::nullopt;
    Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto name = "the folder " + path.filename().string();
    if (!folder && errno == ENOENT) return std::nullopt;
    if (!folder) refuseWithCause("Cannot open " + name);
    requirePrivate(folder.value(), S_IFDIR, name, "0700");
    return PrivateFolder(path, std::move(folder));
}

PrivateFolder PrivateFolder::make(const fs::path& path) {
    if (auto known = find(path)) return std::move(*known);
    if (path.empty()) refuse("There is no folder to keep it in.");
    std::vector<fs::path> missing;
    std::error_code error;
    for (auto at = path; at.has_relative_path() && !fs::exists(at, error); at = at.parent_path())
        missing.push_back(at);
    if (!makePrivateFolder(path)) refuseWithCause("Cannot make the folder " + path.filename().string());
    for (const auto& made : missing) syncFolder(made.parent_path());
    auto found = find(path);
    if (!found) refuse("The folder " + path.filename().string() + " was taken away.");
    return std::move(*found);
}

std::optional<std::string> PrivateFolder::readPrivateFile(const std::string& name, std::size_t limit) const {
    // Not blocking: a pipe of that name must not stop the process.
    const Descriptor file(
        ::openat(folder_.value(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file && errno == ENOENT) return std::nullopt;
    if (!file) refuseWithCause("Cannot open " + name);
    requirePrivate(file.value(), S_IFREG, name, "0600");
    return readAtMost(file.value(), limit, name);
}

Descriptor PrivateFolder::lock() const {
    Descriptor held(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    errno = lockFile(held);
    if (errno == EWOULDBLOCK) refuse("Another process holds the folder's lock.");
    if (errno != 0) refuseWithCause("Cannot lock the folder");
    return held;
}

} // namespace corvantile
