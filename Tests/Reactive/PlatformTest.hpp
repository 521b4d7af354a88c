#pragma once

#include "Reactive/SerialDispatchQueueScheduler.hpp"
#include "TestPlatform/RecordingConsole.hpp"
#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"
#include "Tests/Reactive/Recorder.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace corvantile::rx {

// A fresh process for each test, and a trace.
class PlatformTest : public testing::Test {
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

    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_ = TestPlatform::launch(device_);
    Recorder recorder_;
};

} // namespace corvantile::rx
