#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Session/PaymentQueueWatch.hpp"
#include "CorvantileReactive/DisposeBag.hpp"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {
class UIApplicationDelegate;
} // namespace corvantile

namespace corvantile::tool {

class MarkedTransactions;
class ObservedRouter;
class Reporter;

// What outlives a process of the app.
struct Device {
    std::filesystem::path stateFolder;
    bool isKeychainLocked = false;
    AdjustOptions attribution = {};
    AdsOptions ads = {};
    std::map<std::string, std::string> httpRoutes = {};
};

// A sink as the running app has it.
struct Sink {
    std::string name;
    std::string kind;
    std::shared_ptr<AnalyticComponent> component;
    int registrations = 0;
};

// One process of the app, from the making of its plug-ins to its end: the platform, the delegate with its
// plug-ins, the sinks, the network status. Threads: one, the platform's main thread, outside its loop.
class AppProcess {
public:
    // Makes everything, registers the sinks that want it and awaits the first network status, for a moment. A
    // UsageError when the app is not to be launched so.
    AppProcess(const AppDescription& app, const Device& device, const PlayRegistry::LaunchSwitches& switches,
               Reporter& reporter);
    AppProcess(const AppProcess&) = delete;
    AppProcess& operator=(const AppProcess&) = delete;
    ~AppProcess();

    [[nodiscard]] DesktopPlatform& platform() { return platform_; }
    [[nodiscard]] UIApplication& application() { return *platform_.ports().application; }
    [[nodiscard]] UIApplicationDelegate& delegate() { return *application().delegate(); }

    // The kind, and the place in the delegate's list, of one of its plug-ins.
    [[nodiscard]] std::string describePlugIn(const PluggableApplicationDelegateService& plugIn) const;

    [[nodiscard]] std::vector<Sink>& sinks() { return sinks_; }
    // Refuses an unknown name.
    [[nodiscard]] Sink& sink(const std::string& name);
    void registerSink(Sink& sink);

    // Nothing happens any more: reports the marked transactions that no sink has got.
    void concludeTransactions();

    // Runs what the main queue holds by now.
    void settle();

private:
    struct PlugIn {
        std::string kind;
        const PluggableApplicationDelegateService* identity;
    };

    void makeDelegate(const AppDescription& app, const PlayRegistry::LaunchSwitches& switches);
    void reportStart(const AppDescription& app);
    void makeSinks(const AppDescription& app);
    void followNetwork();

    Reporter& reporter_;
    const std::shared_ptr<MarkedTransactions> transactions_; // concludes once the platform has ended
    DesktopPlatform platform_;
    std::shared_ptr<ObservedRouter> router_; // null: the app has no router
    std::vector<PlugIn> plugIns_;
    std::vector<Sink> sinks_;
    bool isNetworkReported_ = false;
    std::shared_ptr<NetworkReachabilityManager> networkWatch_;
    rx::DisposeBag followed_; // what plug-ins publish
    std::optional<PaymentQueueWatch> queueWatch_;
};

// `wifi`, `cellular`, `not reachable`, `unknown`.
[[nodiscard]] std::string describe(NetworkReachabilityStatus status);

// For a dry run, which holds no subscription back: a UsageError when packages would leave this machine.
void requireLocalDelivery(const AdjustOptions& options, const std::map<std::string, std::string>& routes);

} // namespace corvantile::tool
