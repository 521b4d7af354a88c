#include "CorvantileDesktop/detail/Queues/DesktopQueues.hpp"

#include "CorvantileDesktop/detail/Queues/Executors.hpp"
#include "CorvantileDesktop/detail/Queues/SerialQueue.hpp"

#include <thread>
#include <utility>

namespace corvantile {

namespace {

constexpr std::size_t itemsPerWorkerTurn = 64;

// One item a turn, so that the loop can end, or ask whether it is done, after each.
std::shared_ptr<DispatchQueue> makeMain(const std::shared_ptr<Executors>& executors) {
    SerialQueue::Traits traits{"main", QualityOfService::userInteractive, 1, std::this_thread::get_id()};
    return std::make_shared<SerialQueue>(executors, executors->main(), std::move(traits));
}

} // namespace

DesktopQueues::DesktopQueues(std::shared_ptr<Executors> executors)
    : executors_(std::move(executors)), main_(makeMain(executors_)) {}

std::shared_ptr<DispatchQueue> DesktopQueues::makeSerial(std::string label,
                                                         QualityOfService qualityOfService) {
    SerialQueue::Traits traits{std::move(label), qualityOfService, itemsPerWorkerTurn, std::nullopt};
    return std::make_shared<SerialQueue>(executors_, executors_->workers(), std::move(traits));
}

} // namespace corvantile
