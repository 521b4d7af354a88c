#pragma once

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantileTest/QueueDescription.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace corvantile {

class Schedule;
class TestDevice;
class VirtualQueue;

// The queues of one test process. They stand still until the thread that made them runs them, in virtual
// time.
class VirtualQueues final : public DispatchQueues {
public:
    // More than `itemLimit` items in one call is taken for an endless loop, which is fatal.
    VirtualQueues(TestDevice& device, std::uint64_t seed, std::size_t itemLimit);
    ~VirtualQueues() override;

    [[nodiscard]] std::shared_ptr<DispatchQueue> main() override;
    [[nodiscard]] std::shared_ptr<DispatchQueue> makeSerial(std::string label,
                                                            QualityOfService qualityOfService) override;

    // As TestPlatform says.
    void runUntilIdle();
    void advance(std::chrono::nanoseconds duration);
    bool runUntil(const std::function<bool()>& done, std::chrono::nanoseconds limit);

    [[nodiscard]] std::vector<QueueDescription> made() const;
    [[nodiscard]] std::size_t readyItems() const;
    [[nodiscard]] std::size_t pendingTimers() const;

    // Ends the queues. Fatal from inside an item.
    void close();

private:
    class Run;

    TestDevice& device_;
    const std::uint64_t seed_;
    const std::size_t itemLimit_;
    const std::shared_ptr<Schedule> schedule_;
    const std::shared_ptr<VirtualQueue> main_;
    mutable std::mutex mutex_;
    std::vector<QueueDescription> made_;
};

} // namespace corvantile
