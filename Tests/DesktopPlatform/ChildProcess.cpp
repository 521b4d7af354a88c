#include "Tests/DesktopPlatform/ChildProcess.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace corvantile {

ChildProcess::ChildProcess(const std::function<void(int out)>& work) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throw std::runtime_error("No pipe");
    process_ = ::fork();
    if (process_ < 0) throw std::runtime_error("No process");
    if (process_ == 0) {
        ::close(ends[0]);
        try {
            work(ends[1]);
            ::_exit(0);
        } catch (...) {
            ::_exit(1);
        }
    }
    ::close(ends[1]);
    in_ = ::fdopen(ends[0], "r");
}

ChildProcess::~ChildProcess() {
    kill();
    wait();
    std::fclose(in_);
}

void ChildProcess::kill() {
    if (process_ > 0) ::kill(process_, SIGKILL);
}

std::string ChildProcess::read(std::size_t count) {
    std::string bytes(count, '\0');
    bytes.resize(std::fread(bytes.data(), 1, count, in_));
    return bytes;
}

std::string ChildProcess::readAll() {
    std::string all;
    for (auto some = read(4096); !some.empty(); some = read(4096)) all += some;
    wait();
    return all;
}

void ChildProcess::wait() {
    if (process_ <= 0) return;
    while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
}

} // namespace corvantile
