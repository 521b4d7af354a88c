#include "CorvantileReactive/MainScheduler.hpp"

#include "CorvantilePlatform/Platform.hpp"

#include <utility>

namespace corvantile::rx {

namespace {

struct MainSchedulerRecord {
    std::shared_ptr<MainScheduler> instance = std::make_shared<MainScheduler>(DispatchQueue::main());
};

} // namespace

std::shared_ptr<MainScheduler> MainScheduler::instance() {
    return Platform::current().process().record<MainSchedulerRecord>().instance;
}

std::shared_ptr<SerialDispatchQueueScheduler> MainScheduler::asyncInstance() {
    return std::make_shared<SerialDispatchQueueScheduler>(DispatchQueue::main());
}

MainScheduler::MainScheduler(std::shared_ptr<DispatchQueue> mainQueue)
    : SerialDispatchQueueScheduler(std::move(mainQueue)), pending_(std::make_shared<std::atomic<int>>(0)) {}

MainScheduler::~MainScheduler() = default;

void MainScheduler::post(WorkItem action) {
    const auto pending = pending_; // the action may drop the scheduler
    const bool idle = pending->fetch_add(1, std::memory_order_acq_rel) == 0;
    if (idle && queue().isCurrent()) {
        action();
        pending->fetch_sub(1, std::memory_order_acq_rel);
        return;
    }
    queue().async([pending, action = std::move(action)] {
        action();
        pending->fetch_sub(1, std::memory_order_acq_rel);
    });
}

} // namespace corvantile::rx
