#pragma once

#include "Tests/Contracts/ContractApp.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile {

// TestPlatform as the contracts see it: waiting means that virtual time passes.
class TestHarness {
public:
    explicit TestHarness(
        const TestOptions& options = {.bundleIdentifier = contractBundle,
                                      .localStore = TestStoreOptions{.catalogue = contractCatalogue}})
        : options_(options), platform_(TestPlatform::launch(device_, options)) {}

    [[nodiscard]] Platform& platform() { return *platform_; }
    [[nodiscard]] bool runUntil(const std::function<bool()>& done) { return platform_->runUntil(done); }
    void relaunch() { platform_ = TestPlatform::relaunch(std::move(platform_)); }
    [[nodiscard]] std::unique_ptr<Platform> launchAnother() {
        return TestPlatform::launch(device_, options_);
    }
    static bool runUntil(Platform& other, const std::function<bool()>& done) {
        return static_cast<TestPlatform&>(other).runUntil(done);
    }
    [[nodiscard]] LocalStore& store() { return platform_->localStore(); }
    void setKeychainLocked(bool locked) { device_.keychain().setLocked(locked); }

protected:
    const TestOptions options_;
    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_;
};

} // namespace corvantile
