#include "CorvantileDesktop/Store/detail/ClaimFile.hpp"

#include <cerrno>

#include <fcntl.h>

namespace corvantile {

bool ClaimFile::claim(std::int64_t number) {
    const int error = lockByte(number, F_WRLCK);
    return error != EAGAIN && error != EACCES;
}

void ClaimFile::release(std::int64_t number) { static_cast<void>(lockByte(number, F_UNLCK)); }

// Of the open file, not of the process: two platforms in one process are two processes here as well, and
// nothing else that closes the file frees them.
int ClaimFile::lockByte(std::int64_t number, short kind) {
    const std::lock_guard lock(mutex_);
    if (!descriptor_)
        descriptor_ = Descriptor(::open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
    if (!descriptor_) return ENOENT;
    struct flock byte {};
    byte.l_type = kind;
    byte.l_whence = SEEK_SET;
    byte.l_start = number;
    byte.l_len = 1;
    return ::fcntl(descriptor_.value(), F_OFD_SETLK, &byte) == 0 ? 0 : errno;
}

} // namespace corvantile
