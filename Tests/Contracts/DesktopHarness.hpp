#pragma once

#include "DesktopPlatform/Ads/LocalAds.hpp"
#include "DesktopPlatform/DesktopPlatform.hpp"
#include "DesktopPlatform/Keychain/Vault.hpp"
#include "Tests/Contracts/ContractApp.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <utility>

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
    // Takes away what goes with the app; the keychain stays.
    void reinstall() {
        platform_.reset();
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path() / "state"))
            if (entry.path().filename() != "keychain") std::filesystem::remove_all(entry);
        relaunch();
    }
    [[nodiscard]] std::unique_ptr<Platform> launchAnother() {
        return std::make_unique<DesktopPlatform>(prepare(folder_.path()));
    }
    void setKeychainLocked(bool locked) { platform_->vault().setLocked(locked); }
    void setAds(std::string token, std::string advertisingIdentifier) {
        platform_->ads().set(
            {.token = std::move(token), .advertisingIdentifier = std::move(advertisingIdentifier)});
    }
    void setAds(AAAttributionFailure failure) { platform_->ads().set({.failure = failure}); }

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
