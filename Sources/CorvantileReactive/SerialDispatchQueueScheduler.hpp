#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantileReactive/Scheduler.hpp"

#include <chrono>
#include <memory>
#include <string>

namespace corvantile::rx {

// A scheduler on a serial queue; always asynchronous.
class CORVANTILE_API SerialDispatchQueueScheduler : public Scheduler {
public:
    static constexpr const char* defaultQueueName = "rx.global_dispatch_queue.serial";

    // A new private queue of the installed platform: two schedulers of one name are independent. `leeway` is
    // by how much the system may delay a timer to group it with others; our queues never do.
    explicit SerialDispatchQueueScheduler(QualityOfService qos,
                                          std::string internalSerialQueueName = defaultQueueName,
                                          std::chrono::nanoseconds leeway = std::chrono::nanoseconds(0));
    explicit SerialDispatchQueueScheduler(std::shared_ptr<DispatchQueue> queue);
    ~SerialDispatchQueueScheduler() override;

    void post(WorkItem action) override;

    [[nodiscard]] std::chrono::nanoseconds leeway() const { return leeway_; }

protected:
    [[nodiscard]] DispatchQueue& queue() const { return *queue_; }

private:
    void postAfter(std::chrono::nanoseconds delay, WorkItem action) override;

    std::shared_ptr<DispatchQueue> queue_;
    std::chrono::nanoseconds leeway_;
};

// A new scheduler of quality of service "background" with the default name: its items never overlap, but they
// run beside those of any other that was asked for.
[[nodiscard]] CORVANTILE_API std::shared_ptr<Scheduler> backgroundScheduler();

} // namespace corvantile::rx
