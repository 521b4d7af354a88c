#pragma once

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace corvantile {

// A process of its own that runs `work` and ends without a trace of the test around it. Its bytes written to
// the descriptor that `work` is given can be read here. Start it while no other thread runs and no store is
// open.
class ChildProcess {
public:
    explicit ChildProcess(const std::function<void(int out)>& work) {
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
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() {
        kill();
        wait();
        std::fclose(in_);
    }

    // Ends it as a power cut does.
    void kill() const {
        if (process_ > 0) ::kill(process_, SIGKILL);
    }
    // The next `count` bytes that it writes; fewer when it ends before.
    [[nodiscard]] std::string read(std::size_t count) {
        std::string bytes(count, '\0');
        bytes.resize(std::fread(bytes.data(), 1, count, in_));
        return bytes;
    }
    // The rest of what it writes until its end.
    [[nodiscard]] std::string readAll() {
        std::string all;
        for (auto some = read(4096); !some.empty(); some = read(4096)) all += some;
        wait();
        return all;
    }

private:
    void wait() {
        while (process_ > 0 && ::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
        }
        process_ = -1;
    }

    pid_t process_ = -1;
    std::FILE* in_ = nullptr;
};

} // namespace corvantile
