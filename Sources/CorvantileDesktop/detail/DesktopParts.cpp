#include "CorvantileDesktop/detail/DesktopParts.hpp"

#include "CorvantileCrypto/OpenSSLCryptor.hpp"
#include "CorvantileCrypto/OpenSSLRandom.hpp"
#include "CorvantileDesktop/Ads/LocalAds.hpp"
#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"
#include "CorvantileDesktop/Foundation/detail/DescriptorConsole.hpp"
#include "CorvantileDesktop/Foundation/detail/FolderBundle.hpp"
#include "CorvantileDesktop/Foundation/detail/SystemClock.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantileDesktop/detail/Application/LocalDevice.hpp"
#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileDesktop/detail/Queues/SerialQueue.hpp"
#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"
#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"

#include <algorithm>
#include <functional>
#include <string>
#include <thread>
#include <utility>

namespace corvantile {

namespace {

// The app, which the host itself launches and feeds: it only keeps the delegate.
class HostApplication final : public UIApplication {
public:
    [[nodiscard]] std::shared_ptr<UIApplicationDelegate> delegate() const override { return delegate_; }
    // Swapped, so that the former delegate ends when the new one is already in place.
    void setDelegate(std::shared_ptr<UIApplicationDelegate> delegate) override { delegate_.swap(delegate); }

private:
    std::shared_ptr<UIApplicationDelegate> delegate_;
};

// Two at least: an item that waits for the disk must not hold up every other queue.
unsigned workerCount() { return std::clamp(std::thread::hardware_concurrency(), 2U, 4U); }

std::shared_ptr<Console> consoleOf(const DesktopOptions& options) {
    if (options.console) return options.console;
    return std::make_shared<DescriptorConsole>(options.consoleDescriptor);
}

} // namespace

std::filesystem::path inState(const DesktopOptions& options, const char* name) {
    return options.stateFolder.empty() ? options.stateFolder : options.stateFolder / name;
}

std::function<void(std::function<void()>)> inBackground(DispatchQueues& queues, const std::string& label) {
    return [queue = queues.makeSerial(label, QualityOfService::background)](std::function<void()> work) {
        queue->asyncAfter(logRest, std::move(work));
    };
}

DesktopPlatform::Parts::Parts()
    : executors(std::make_shared<Executors>(workerCount())),
      reachability(std::make_shared<NetlinkReachabilityManagers>(executors->workers())) {}

DesktopPlatform::Parts::~Parts() = default;

Ports DesktopPlatform::Parts::ports(const DesktopOptions& options) {
    const auto console = consoleOf(options);
    for (const auto* const name :
         {"vendor-identifier", "vendor-identifier.copy", "receipt", "keychain/master.key"})
        if (!options.stateFolder.empty()) removeAbandonedFiles(options.stateFolder / name);
    const auto queues = std::make_shared<DesktopQueues>(executors);
    vault =
        std::make_shared<Vault>(VaultOptions{.folder = inState(options, "keychain"),
                                             .console = console,
                                             .reportsUnreadableEntries = options.reportsUnreadableEntries,
                                             .inBackground = inBackground(*queues, "corvantile.keychain")});
    userDefaults = std::make_shared<SQLiteUserDefaults>(
        UserDefaultsOptions{.file = inState(options, "user-defaults.sqlite"),
                            .console = console,
                            .inBackground = inBackground(*queues, "corvantile.user-defaults")});
    ads = std::make_shared<LocalAds>(options.ads);
    Ports made{.application = std::make_shared<HostApplication>(),
               .device = std::make_shared<LocalDevice>(options.stateFolder, options.systemVersion, console),
               .mainBundle = std::make_shared<FolderBundle>(options.bundleIdentifier, options.resourceFolder,
                                                            inState(options, "receipt")),
               .queues = queues,
               .clock = std::make_shared<SystemClock>(),
               .console = console,
               .reachability = reachability,
               .keychain = vault,
               .userDefaults = userDefaults,
               .random = std::make_shared<OpenSSLRandom>(),
               .cryptor = std::make_shared<OpenSSLCryptor>(),
               .attribution = ads,
               .advertising = ads};
    addHTTP(made, options);
    addAdjust(made, options);
    addStore(made, options);
    if (options.decorate) options.decorate(made);
    return made;
}

} // namespace corvantile
