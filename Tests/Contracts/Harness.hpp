#pragma once

#include "Tests/Contracts/TestHarness.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
#include "Tests/Contracts/DesktopHarness.hpp"
#endif

namespace corvantile {

// A harness launches ContractApp on its platform. It offers `Platform& platform()` and
// `bool runUntil(const std::function<bool()>& done)`, which runs the main thread's work and answers false
// when `done` is still false after ten seconds of the platform's time; `relaunch()` in the same place;
// `launchAnother()`, a second process beside the first, which it must not outlive, and `runUntil(other,
// done)` for that one; `store()`, a local one that sells "gold" and "silver"; and `setKeychainLocked(bool)`.
// Its end is the process's.
#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
using Harnesses = testing::Types<TestHarness, DesktopHarness>;
#else
using Harnesses = testing::Types<TestHarness>;
#endif

// What every contract's tests share: a process of their own.
template <class Harness>
class PortContract : public testing::Test {
protected:
    [[nodiscard]] const Ports& ports() { return harness_->platform().ports(); }

    [[nodiscard]] std::shared_ptr<DispatchQueue> mainQueue() { return ports().queues->main(); }
    [[nodiscard]] std::shared_ptr<DispatchQueue> makeQueue(std::string label = "contract") {
        return ports().queues->makeSerial(std::move(label), QualityOfService::utility);
    }

    [[nodiscard]] bool runUntil(const std::function<bool()>& done) { return harness_->runUntil(done); }

    // What the main loop does between two items.
    void turn() {
        bool hasRun = false;
        mainQueue()->async([&] { hasRun = true; });
        ASSERT_TRUE(runUntil([&] { return hasRun; }));
    }

    [[nodiscard]] Harness& harness() { return *harness_; }

    void relaunch() { harness_->relaunch(); }
    [[nodiscard]] std::unique_ptr<Platform> launchAnother() { return harness_->launchAnother(); }
    void endProcess() { harness_.reset(); }

private:
    std::optional<Harness> harness_{std::in_place};
};

} // namespace corvantile
