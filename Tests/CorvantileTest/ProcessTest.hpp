#pragma once

#include "CorvantileTest/RecordingConsole.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/TestPlatform.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

namespace corvantile {

// A fresh process on a device of its own for each test.
class ProcessTest : public testing::Test {
protected:
    [[nodiscard]] std::vector<std::string> lines() const { return platform_->console().lines(); }

    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_ = TestPlatform::launch(device_);
};

} // namespace corvantile
