#pragma once

#include "CorvantileLocalStore/LocalStore.hpp"

#include <functional>
#include <memory>

namespace corvantile {

class DispatchQueue;

// Wakes somebody up for what a store does next. Threads: any.
class DueTimer {
public:
    explicit DueTimer(std::shared_ptr<DispatchQueue> queue);
    ~DueTimer();

    // Calls `wake` on the queue when it is time, unless another moment is asked for meanwhile. What is waited
    // for already changes nothing.
    void await(const LocalStore::Due& due, std::function<void()> wake);

private:
    struct State;
    const std::shared_ptr<DispatchQueue> queue_;
    const std::shared_ptr<State> state_;
};

} // namespace corvantile
