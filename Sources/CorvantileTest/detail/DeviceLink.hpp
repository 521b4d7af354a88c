#pragma once

#include "CorvantileTest/TestDevice.hpp"

#include <atomic>

namespace corvantile {

// The way of one process to its device. A port that changes what survives the process does so through it and
// leaves it be once the link is cut, so that a killed process reaches nothing any more. Threads: any.
class DeviceLink {
public:
    explicit DeviceLink(TestDevice& device) : device_(device) {}

    [[nodiscard]] TestDevice& device() const { return device_; }
    [[nodiscard]] bool isCut() const { return isCut_.load(std::memory_order_acquire); }
    void cut() { isCut_.store(true, std::memory_order_release); }

private:
    TestDevice& device_;
    std::atomic<bool> isCut_{false};
};

} // namespace corvantile
