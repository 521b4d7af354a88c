#pragma once

#include "CorvantilePlatform/Foundation/PlatformRequest.hpp"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace corvantile {

class DispatchQueue;

// Requests of one process: answered in their time, left hanging, or cancelled. Threads: any.
class ScriptedRequests {
public:
    using Answer = std::function<void()>;

    ScriptedRequests();
    ~ScriptedRequests();

    // Runs `answer` on `queue` after the delay, unless what is returned goes before.
    [[nodiscard]] std::shared_ptr<PlatformRequest> begin(DispatchQueue& queue, Answer answer);

    // Both hold for the requests that begin afterwards.
    void setDelay(std::chrono::nanoseconds delay);
    void setHanging(bool hanging);

    [[nodiscard]] int underWay() const;
    [[nodiscard]] int cancelled() const;

    // Lets go of the answers that hang.
    void close();

private:
    class Pending;
    class Request;
    struct Counts;

    const std::shared_ptr<Counts> counts_;
    std::mutex mutex_;
    std::chrono::nanoseconds delay_{0};
    bool isHanging_ = false;
    std::vector<std::shared_ptr<Pending>> hanging_;
};

} // namespace corvantile
