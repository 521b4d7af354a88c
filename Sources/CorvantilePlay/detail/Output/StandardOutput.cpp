#include "CorvantilePlay/detail/Output/StandardOutput.hpp"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iostream>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvantile::tool {

namespace {

std::atomic<int> firstError{0};

// A database that is opened as descriptor 1 would get what is printed. These answer EBADF instead.
void openClosedStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
        const int unusable = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        static_cast<void>(::open("/dev/null", unusable)); // takes the lowest number that is free
    }
}

void waitUntilWritable() {
    pollfd waiting{STDOUT_FILENO, POLLOUT, 0};
    ::poll(&waiting, 1, -1);
}

// 0, or the error.
int writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno == EAGAIN)
            waitUntilWritable();
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

void endByPipeSignal() {
    std::signal(SIGPIPE, SIG_DFL);
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
    std::raise(SIGPIPE);
}

} // namespace

StandardOutput::StandardOutput() : before_(std::cout.rdbuf(this)) {
    openClosedStreams();
    std::signal(SIGPIPE, SIG_IGN);
    setp(bytes_.data(), bytes_.data() + bytes_.size());
}

StandardOutput::~StandardOutput() {
    sync();
    std::cout.rdbuf(before_);
}

ExitCode StandardOutput::close(ExitCode code) {
    sync();
    const int error = firstError;
    if (error == 0) return code;
    if (error == EPIPE) endByPipeSignal();
    std::cerr << "corvantile: standard output cannot be written: " << std::generic_category().message(error)
              << '\n';
    return ExitCode::output;
}

StandardOutput::int_type StandardOutput::overflow(int_type character) {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(character, traits_type::eof())) sputc(traits_type::to_char_type(character));
    return traits_type::not_eof(character);
}

int StandardOutput::sync() {
    if (firstError == 0) firstError = writeAll({pbase(), static_cast<std::size_t>(pptr() - pbase())});
    setp(bytes_.data(), bytes_.data() + bytes_.size());
    return firstError == 0 ? 0 : -1;
}

bool hasStandardOutputFailed() { return firstError != 0; }

bool areStandardStreamsOne() {
    struct stat out {};
    struct stat errors {};
    return ::fstat(STDOUT_FILENO, &out) == 0 && ::fstat(STDERR_FILENO, &errors) == 0 &&
           out.st_dev == errors.st_dev && out.st_ino == errors.st_ino;
}

} // namespace corvantile::tool
