#include "CorvantileDesktop/detail/Storage/FileIdentity.hpp"

#include <sys/stat.h>

namespace corvantile {

std::optional<FileIdentity> FileIdentity::of(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
                        status.st_mtim.tv_nsec};
}

} // namespace corvantile
