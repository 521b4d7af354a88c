#pragma once

#include "CorvantileReactive/SerialDispatchQueueScheduler.hpp"
#include "Tests/CorvantileReactive/Recorder.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::rx {

// A fresh process for each test, and a trace.
class PlatformTest : public ProcessTest {
protected:
    [[nodiscard]] static std::shared_ptr<Scheduler> makeScheduler() {
        return std::make_shared<SerialDispatchQueueScheduler>(QualityOfService::standard);
    }
    std::string take() { return recorder_.take(); }
    // Runs what is queued first.
    std::string run() {
        platform_->runUntilIdle();
        return take();
    }

    Recorder recorder_;
};

} // namespace corvantile::rx
