#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

#include <sys/types.h>

namespace corvantile {

// A process of its own that runs `work` and ends without a trace of the test around it. Its bytes written to
// the descriptor that `work` is given can be read here. Start it while no other thread runs and no store is
// open.
class ChildProcess {
public:
    explicit ChildProcess(const std::function<void(int out)>& work);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess(); // kills it

    // Ends it as a power cut does.
    void kill();
    // The next `count` bytes that it writes; fewer when it ends before.
    [[nodiscard]] std::string read(std::size_t count);
    // The rest of what it writes until its end.
    [[nodiscard]] std::string readAll();

private:
    void wait();

    pid_t process_ = -1;
    std::FILE* in_ = nullptr;
};

} // namespace corvantile
