#include "DesktopPlatform/DesktopPlatform.hpp"

#include "Crypto/OpenSSLCryptor.hpp"
#include "Crypto/OpenSSLRandom.hpp"
#include "DesktopPlatform/Adjust/OutboxAdjust.hpp"
#include "DesktopPlatform/Ads/LocalAds.hpp"
#include "DesktopPlatform/Application/HostApplication.hpp"
#include "DesktopPlatform/Application/LocalDevice.hpp"
#include "DesktopPlatform/Foundation/DescriptorConsole.hpp"
#include "DesktopPlatform/Foundation/FolderBundle.hpp"
#include "DesktopPlatform/Foundation/SQLiteUserDefaults.hpp"
#include "DesktopPlatform/Foundation/SystemClock.hpp"
#include "DesktopPlatform/Keychain/Vault.hpp"
#include "DesktopPlatform/Network/CurlHTTPClient.hpp"
#include "DesktopPlatform/Network/HTTPRoutes.hpp"
#include "DesktopPlatform/Network/NetlinkReachabilityManager.hpp"
#include "DesktopPlatform/Queues/DesktopQueues.hpp"
#include "DesktopPlatform/Queues/Executors.hpp"
#include "DesktopPlatform/Queues/SerialQueue.hpp"
#include "DesktopPlatform/Store/DesktopStore.hpp"
#include "LocalStore/LocalStore.hpp"
#include "LocalStore/Ports/LocalPaymentQueue.hpp"
#include "LocalStore/Ports/LocalStoreRequests.hpp"
#include "Platform/FatalError.hpp"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <thread>
#include <utility>

namespace corvantile {

namespace {

using Moment = std::chrono::steady_clock::time_point;

// How long an idle loop leaves a condition unasked that another thread may have made true.
constexpr std::chrono::milliseconds askAgain{5};

// Two at least: an item that waits for the disk must not hold up every other queue.
unsigned workerCount() { return std::clamp(std::thread::hardware_concurrency(), 2U, 4U); }

Moment momentAfter(std::chrono::nanoseconds duration) {
    const auto now = std::chrono::steady_clock::now();
    return duration > Moment::max() - now ? Moment::max() : now + duration;
}

DesktopOptions checked(DesktopOptions options) {
    const auto& name = options.bundleIdentifier;
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos)
        fatalError("A bundle identifier must be one file name: '" + name + "'.");
    if (options.stateFolder.empty()) options.stateFolder = defaultStateFolder(name);
    return options;
}

std::shared_ptr<Console> consoleOf(const DesktopOptions& options) {
    if (options.console) return options.console;
    return std::make_shared<DescriptorConsole>(options.consoleDescriptor);
}

std::shared_ptr<HTTPRoutes> routesOf(const DesktopOptions& options) {
    auto routes = std::make_shared<HTTPRoutes>();
    for (const auto& [origin, base] : options.httpRoutes)
        if (!routes->set(origin, base))
            fatalError("No route can lead from '" + origin + "' to '" + base + "'.");
    return routes;
}

} // namespace

// The ports under their own types, for the platform itself.
struct DesktopPlatform::Parts {
    [[nodiscard]] Ports ports(const DesktopOptions& options) {
        const auto console = consoleOf(options);
        const auto queues = std::make_shared<DesktopQueues>(executors);
        vault = std::make_shared<Vault>(vaultOptions(options, console, *queues));
        userDefaults = std::make_shared<SQLiteUserDefaults>(userDefaultsOptions(options, console, *queues));
        httpRoutes = routesOf(options);
        http = std::make_shared<CurlHTTPClient>(httpRoutes);
        ads = std::make_shared<LocalAds>(options.ads);
        const auto& state = options.stateFolder;
        Ports made{.application = std::make_shared<HostApplication>(),
                   .device = std::make_shared<LocalDevice>(options.stateFolder, options.systemVersion),
                   .mainBundle =
                       std::make_shared<FolderBundle>(options.bundleIdentifier, options.resourceFolder,
                                                      state.empty() ? state : state / "receipt"),
                   .queues = queues,
                   .clock = std::make_shared<SystemClock>(),
                   .console = console,
                   .reachability = reachability,
                   .keychain = vault,
                   .userDefaults = userDefaults,
                   .random = std::make_shared<OpenSSLRandom>(),
                   .cryptor = std::make_shared<OpenSSLCryptor>(),
                   .http = http,
                   .attribution = ads,
                   .advertising = ads};
        adjust = std::make_shared<OutboxAdjust>(state.empty() ? state : state / "outbox.sqlite",
                                                options.adjust, made);
        made.adjust = adjust;
        addStore(made, options);
        if (options.decorate) options.decorate(made);
        return made;
    }

    void addStore(Ports& made, const DesktopOptions& options) {
        const auto queue = made.queues->makeSerial("corvantile.store", QualityOfService::background);
        store = makeDesktopStore(options, made.clock, made.console,
                                 [queue](std::function<void()> work) { queue->async(std::move(work)); });
        made.paymentQueue = LocalPaymentQueue::make(store, made.queues->main(), made.console);
        made.storeRequests = std::make_shared<LocalStoreRequests>(store);
    }

    // Work that waits for the disk has a queue, so that it ends as queues do: unrun.
    [[nodiscard]] static VaultOptions vaultOptions(const DesktopOptions& options,
                                                   std::shared_ptr<Console> console, DesktopQueues& queues) {
        const auto& state = options.stateFolder;
        const auto queue = queues.makeSerial("corvantile.keychain", QualityOfService::background);
        return {.folder = state.empty() ? state : state / "keychain",
                .console = std::move(console),
                .reportsUnreadableEntries = options.reportsUnreadableEntries,
                .inBackground = [queue](std::function<void()> work) { queue->async(std::move(work)); }};
    }

    [[nodiscard]] static UserDefaultsOptions userDefaultsOptions(const DesktopOptions& options,
                                                                 std::shared_ptr<Console> console,
                                                                 DesktopQueues& queues) {
        const auto& state = options.stateFolder;
        const auto queue = queues.makeSerial("corvantile.user-defaults", QualityOfService::background);
        return {.file = state.empty() ? state : state / "user-defaults.sqlite",
                .console = std::move(console),
                .inBackground = [queue](std::function<void()> work) { queue->async(std::move(work)); }};
    }

    void requireMainThread() const {
        if (!executors->isMainThread() || SerialQueue::runningItem())
            fatalError("A platform's main loop runs and ends only on its main thread, outside any item.");
    }

    const std::shared_ptr<Executors> executors = std::make_shared<Executors>(workerCount());
    const std::shared_ptr<NetlinkReachabilityManagers> reachability =
        std::make_shared<NetlinkReachabilityManagers>(executors->workers());
    std::shared_ptr<Vault> vault;
    std::shared_ptr<SQLiteUserDefaults> userDefaults;
    std::shared_ptr<HTTPRoutes> httpRoutes;
    std::shared_ptr<CurlHTTPClient> http;
    std::shared_ptr<LocalAds> ads;
    std::shared_ptr<OutboxAdjust> adjust;
    std::shared_ptr<LocalStore> store;
};

DesktopPlatform::DesktopPlatform(DesktopOptions options)
    : DesktopPlatform(checked(std::move(options)), std::make_unique<Parts>()) {}

DesktopPlatform::DesktopPlatform(DesktopOptions options, std::unique_ptr<Parts> parts)
    : Platform(parts->ports(options)),
      stateFolder_(std::move(options.stateFolder)),
      parts_(std::move(parts)) {
    install();
}

DesktopPlatform::~DesktopPlatform() { end(); }

Vault& DesktopPlatform::vault() const { return *parts_->vault; }
HTTPRoutes& DesktopPlatform::httpRoutes() const { return *parts_->httpRoutes; }
LocalAds& DesktopPlatform::ads() const { return *parts_->ads; }
OutboxAdjust& DesktopPlatform::adjust() const { return *parts_->adjust; }
LocalStore& DesktopPlatform::store() const { return *parts_->store; }

void DesktopPlatform::runMainLoop() {
    parts_->requireMainThread();
    auto& loop = parts_->executors->main();
    do {
        parts_->userDefaults->beginTurn();
    } while (loop.run_one() != 0);
    loop.restart();
}

bool DesktopPlatform::runMainLoopUntil(const std::function<bool()>& done, std::chrono::nanoseconds timeout) {
    parts_->requireMainThread();
    auto& loop = parts_->executors->main();
    const auto end = momentAfter(timeout);
    bool isDone = done();
    for (; !isDone && !loop.stopped() && std::chrono::steady_clock::now() < end; isDone = done()) {
        parts_->userDefaults->beginTurn();
        loop.run_one_until(std::min(end, momentAfter(askAgain)));
    }
    loop.restart();
    return isDone;
}

void DesktopPlatform::runMainLoopFor(std::chrono::nanoseconds duration) {
    parts_->requireMainThread();
    auto& loop = parts_->executors->main();
    const auto end = momentAfter(duration);
    do {
        parts_->userDefaults->beginTurn();
    } while (loop.run_one_until(end) != 0);
    loop.restart();
}

void DesktopPlatform::stopMainLoop() { parts_->executors->main().stop(); }

void DesktopPlatform::stop() {
    parts_->requireMainThread();
    parts_->http->close();
    parts_->executors->close();
    parts_->reachability->close();
    parts_->executors->discard();
}

void DesktopPlatform::reportOutlived(int count) {
    std::fprintf(stderr, "Corvantile: %d plug-in(s) outlived their process: somebody still holds them.\n",
                 count);
}

} // namespace corvantile
