#pragma once

#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "Tests/Contracts/ContractApp.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"

#include <fstream>

namespace corvantile {

// Launches a desktop platform whose state is temporary.
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
    static bool runUntil(Platform& other, const std::function<bool()>& done) {
        return static_cast<DesktopPlatform&>(other).runMainLoopUntil(done, std::chrono::seconds(10));
    }
    [[nodiscard]] LocalStore& store() { return platform_->store(); }
    void setKeychainLocked(bool locked) { platform_->vault().setLocked(locked); }

private:
    static DesktopOptions prepare(const std::filesystem::path& folder) {
        std::ofstream(folder / "catalogue.storekit") << contractCatalogue;
        return {.bundleIdentifier = contractBundle,
                .stateFolder = folder / "state",
                .store = {.catalogue = folder / "catalogue.storekit"}};
    }

    TemporaryFolder folder_;
    std::unique_ptr<DesktopPlatform> platform_;
};

} // namespace corvantile
