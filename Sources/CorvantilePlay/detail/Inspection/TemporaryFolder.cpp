#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <chrono>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace corvantile::tool {

namespace {

namespace fs = std::filesystem;

constexpr const char* folderPrefix = "corvantile-tool-";

Descriptor lockOf(const fs::path& folder) {
    Descriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (lock && ::flock(lock.value(), LOCK_EX | LOCK_NB) != 0) return Descriptor();
    return lock;
}

// Its maker has gone: nobody holds its lock, and it was not made just now.
bool isLeftBehind(const Descriptor& lock) {
    constexpr std::chrono::seconds longEnough{2}; // between making a folder and locking it
    struct stat status {};
    if (::fstat(lock.value(), &status) != 0 || status.st_uid != ::geteuid()) return false;
    return std::chrono::system_clock::now() - std::chrono::system_clock::from_time_t(status.st_mtime) >
           longEnough;
}

void removeLeftBehind(const fs::path& among) {
    std::error_code ignored; // what cannot be looked at or removed is another user's
    for (fs::directory_iterator at(among, ignored), end; !ignored && at != end; at.increment(ignored)) {
        if (!at->path().filename().string().starts_with(folderPrefix)) continue;
        const auto lock = lockOf(at->path());
        std::error_code kept;
        if (lock && isLeftBehind(lock)) fs::remove_all(at->path(), kept);
    }
}

} // namespace

TemporaryFolder::TemporaryFolder() {
    std::error_code error;
    const auto among = fs::temp_directory_path(error);
    if (error) throw UsageError("there is no folder for temporary files; TMPDIR names one");
    removeLeftBehind(among);
    path_ = (among / (std::string(folderPrefix) + "XXXXXX")).string();
    if (::mkdtemp(path_.data()) == nullptr) throw UsageError("a temporary folder cannot be made: " + path_);
    lock_ = lockOf(path_);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored; // nothing more can be done about what stays behind
    fs::remove_all(path_, ignored);
}

} // namespace corvantile::tool
