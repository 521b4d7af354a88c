#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"

#include "CorvantileDesktop/detail/Files/Descriptor.hpp"

#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvantile {

namespace {

namespace fs = std::filesystem;

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

fs::path temporaryNameFor(const fs::path& file) {
    static std::atomic<unsigned> next{0};
    auto name = file;
    name += "." + std::to_string(::getpid()) + "-" + std::to_string(next.fetch_add(1)) + ".new";
    return name;
}

// `PID-NUMBER.new` of a process that has gone.
bool isAbandoned(std::string_view ending) {
    pid_t process = 0;
    const auto [hyphen, error] = std::from_chars(ending.data(), ending.data() + ending.size(), process);
    if (error != std::errc() || process <= 0 || !ending.ends_with(".new") || *hyphen != '-') return false;
    return ::kill(process, 0) != 0 && errno == ESRCH;
}

// Replaces the bytes by those of the file, which may have become shorter or longer. Returns the error number.
int readAll(int descriptor, std::string& bytes) {
    constexpr std::size_t atLeast = 4096;
    for (std::size_t size = 0;;) {
        if (size == bytes.size()) bytes.resize(size + atLeast);
        const auto count = ::read(descriptor, bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        size += static_cast<std::size_t>(count);
        if (count != 0) continue;
        bytes.resize(size);
        return 0;
    }
}

bool writeTemporary(const fs::path& file, std::string_view bytes) {
    const Descriptor target(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    return target.value() >= 0 && writeAll(target.value(), bytes) && ::fsync(target.value()) == 0;
}

// Some file systems cannot refuse to replace; there the last of two writers wins.
WriteResult moveIntoPlace(const fs::path& from, const fs::path& to, bool mayReplace) {
    const unsigned flags = mayReplace ? 0U : static_cast<unsigned>(RENAME_NOREPLACE);
    int result = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) result = std::rename(from.c_str(), to.c_str());
    if (result == 0) return WriteResult::written;
    return errno == EEXIST ? WriteResult::exists : WriteResult::failed;
}

WriteResult write(const fs::path& file, std::string_view bytes, bool mayReplace) {
    const auto temporary = temporaryNameFor(file);
    auto result = WriteResult::failed;
    if (writeTemporary(temporary, bytes)) result = moveIntoPlace(temporary, file, mayReplace);
    if (result == WriteResult::written)
        syncFolder(file.parent_path());
    else
        ::unlink(temporary.c_str());
    return result;
}

} // namespace

std::optional<std::string> readFile(const fs::path& file) {
    int error = 0;
    return readFile(file, error);
}

std::optional<std::string> readFile(const fs::path& file, int& error) {
    // Not blocking: a pipe of that name must not stop the process.
    const Descriptor source(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    error = 0;
    if (!source || ::fstat(source.value(), &status) != 0)
        error = errno;
    else if (!S_ISREG(status.st_mode))
        error = EINVAL;
    if (error != 0) return std::nullopt;
    std::string bytes;
    bytes.resize(static_cast<std::size_t>(status.st_size) + 1);
    error = readAll(source.value(), bytes);
    if (error != 0) return std::nullopt;
    return bytes;
}

bool isMissing(int error) { return error == ENOENT || error == ENOTDIR; }

void removeAbandonedFiles(const fs::path& file) {
    const auto beginning = file.filename().string() + ".";
    std::error_code error;
    for (fs::directory_iterator at(file.parent_path(), error), end; !error && at != end;
         at.increment(error)) {
        const auto name = at->path().filename().string();
        if (name.starts_with(beginning) && isAbandoned(name.substr(beginning.size())))
            ::unlink(at->path().c_str());
    }
}

WriteResult writeNewFile(const fs::path& file, std::string_view bytes) { return write(file, bytes, false); }

bool replaceFile(const fs::path& file, std::string_view bytes) {
    return write(file, bytes, true) == WriteResult::written;
}

void syncFolder(const fs::path& folder) {
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened) ::fsync(opened.value());
}

bool makePrivateFolder(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return true;
    if (const auto above = folder.parent_path(); !above.empty()) fs::create_directories(above, error);
    return ::mkdir(folder.c_str(), 0700) == 0 || (errno == EEXIST && fs::is_directory(folder, error));
}

} // namespace corvantile
