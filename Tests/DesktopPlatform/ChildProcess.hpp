#pragma once

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
    // All that it wrote, once it has ended. True from `endedWell` when it was neither killed nor threw.
    [[nodiscard]] std::string readAll();
    [[nodiscard]] bool endedWell();

private:
    void wait();

    pid_t process_ = -1;
    int in_ = -1;
    int status_ = 0;
};

} // namespace corvantile
