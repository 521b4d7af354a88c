#include "CorvantileDesktop/detail/Files/Descriptor.hpp"

#include <cerrno>
#include <chrono>
#include <thread>

#include <sys/file.h>

namespace corvantile {

namespace {

constexpr std::chrono::seconds longestWaitForLock{5};
constexpr std::chrono::milliseconds betweenAttempts{2};

} // namespace

int lockFile(const Descriptor& file) {
    const auto end = std::chrono::steady_clock::now() + longestWaitForLock;
    while (::flock(file.value(), LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        const bool isHeld = error == EWOULDBLOCK || error == EINTR;
        if (!isHeld || std::chrono::steady_clock::now() > end) return isHeld ? EWOULDBLOCK : error;
        std::this_thread::sleep_for(betweenAttempts);
    }
    return 0;
}

} // namespace corvantile
