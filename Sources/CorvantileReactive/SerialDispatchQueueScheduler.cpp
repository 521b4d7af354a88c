#include "CorvantileReactive/SerialDispatchQueueScheduler.hpp"

#include "CorvantilePlatform/Platform.hpp"

#include <utility>

namespace corvantile::rx {

SerialDispatchQueueScheduler::SerialDispatchQueueScheduler(QualityOfService qos,
                                                           std::string internalSerialQueueName,
                                                           std::chrono::nanoseconds leeway)
    : queue_(Platform::current().ports().queues->makeSerial(std::move(internalSerialQueueName), qos)),
      leeway_(leeway) {}

SerialDispatchQueueScheduler::SerialDispatchQueueScheduler(std::shared_ptr<DispatchQueue> queue)
    : queue_(std::move(queue)), leeway_(0) {}

SerialDispatchQueueScheduler::~SerialDispatchQueueScheduler() = default;

void SerialDispatchQueueScheduler::post(WorkItem action) { queue_->async(std::move(action)); }

void SerialDispatchQueueScheduler::postAfter(std::chrono::nanoseconds delay, WorkItem action) {
    queue_->asyncAfter(delay, std::move(action));
}

std::shared_ptr<Scheduler> backgroundScheduler() {
    return std::make_shared<SerialDispatchQueueScheduler>(QualityOfService::background);
}

} // namespace corvantile::rx
