#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"

#include "CorvantileDesktop/detail/Files/Descriptor.hpp"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>
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
    std::error_code error;
    if (!fs::is_regular_file(file, error)) return std::nullopt;
    std::ifstream stream(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.good() && !stream.eof()) return std::nullopt;
    return bytes;
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
