#pragma once

#include "DesktopPlatform/DesktopPlatform.hpp"
#include "DesktopPlatform/Keychain/Vault.hpp"
#include "Tests/Contracts/ContractApp.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>

namespace corvantile {

// Launches a desktop platform whose state and bundle are temporary. It prints on standard output.
class DesktopHarness {
public:
    DesktopHarness() { relaunch(); }

    [[nodiscard]] Platform& platform() { return *platform_; }
    [[nodiscard]] bool runUntil(const std::function<bool()>& done) {
        return platform_->runMainLoopUntil(done, std::chrono::seconds(10));
    }
    void relaunch() {
        platform_.reset();
        platform_ = std::make_unique<DesktopPlatform>(prepare(folder_.path()));
    }
    [[nodiscard]] std::unique_ptr<Platform> launchAnother() {
        return std::make_unique<DesktopPlatform>(prepare(folder_.path()));
    }
    void setKeychainLocked(bool locked) { platform_->vault().setLocked(locked); }

private:
    static DesktopOptions prepare(const std::filesystem::path& folder) {
        std::filesystem::create_directory(folder / "bundle");
        std::ofstream(folder / "bundle" / (contractResourceName + "." + contractResourceExtension),
                      std::ios::binary)
            << contractResource;
        return {.bundleIdentifier = contractBundle,
                .stateFolder = folder / "state",
                .resourceFolder = folder / "bundle"};
    }

    TemporaryFolder folder_;
    std::unique_ptr<DesktopPlatform> platform_;
};

} // namespace corvantile
