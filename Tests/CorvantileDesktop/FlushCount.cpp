#include "Tests/CorvantileDesktop/FlushCount.hpp"

#include <atomic>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<int> count{0};

int flush(long call, int descriptor) {
    ++count;
    return static_cast<int>(::syscall(call, descriptor));
}

} // namespace

// They stand before the C library's, for the libraries of this program too.
extern "C" {
int fsync(int descriptor) { return flush(SYS_fsync, descriptor); }
int fdatasync(int descriptor) { return flush(SYS_fdatasync, descriptor); }
}

namespace corvantile {

int flushesOf(const std::function<void()>& work) {
    const int before = count;
    work();
    return count - before;
}

} // namespace corvantile
