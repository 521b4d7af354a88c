#pragma once

#include <atomic>
#include <thread>

namespace corvantile {

// A second thread that sleeps: with one alone the C++ library leaves out locked instructions.
class Company {
public:
    ~Company() {
        done_.store(true);
        done_.notify_all();
        thread_.join();
    }

private:
    std::atomic<bool> done_{false};
    std::thread thread_{[this] { done_.wait(false); }};
};

} // namespace corvantile
