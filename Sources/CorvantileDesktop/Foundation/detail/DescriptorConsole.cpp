#include "CorvantileDesktop/Foundation/detail/DescriptorConsole.hpp"

#include "CorvantilePlatform/NonCopyable.hpp"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>

#include <poll.h>
#include <pthread.h>
#include <unistd.h>

namespace corvantile {

namespace {

// A write to a closed pipe raises SIGPIPE on the writing thread; what the process does with that signal is
// the host's to decide, so it is held back here and taken away.
class PipeSignalSwallowed : NonCopyable {
public:
    PipeSignalSwallowed() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~PipeSignalSwallowed() {
        const timespec noWait{};
        while (sigtimedwait(&pipe_, nullptr, &noWait) < 0 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }

private:
    sigset_t pipe_{};
    sigset_t before_{};
};

void waitUntilWritable(int descriptor) {
    pollfd waiting{descriptor, POLLOUT, 0};
    ::poll(&waiting, 1, -1);
}

void write(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = ::write(descriptor, bytes.data(), bytes.size());
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno == EAGAIN)
            waitUntilWritable(descriptor);
        else if (errno != EINTR)
            return; // errors are reported on the console, so this one cannot be
    }
}

} // namespace

void DescriptorConsole::print(std::string_view text) {
    const std::lock_guard lock(mutex_);
    line_.assign(text).push_back('\n');
    const PipeSignalSwallowed swallowed;
    // What the host printed before through the C library comes first.
    if (descriptor_ == STDOUT_FILENO) std::fflush(stdout);
    write(descriptor_, line_);
}

} // namespace corvantile
