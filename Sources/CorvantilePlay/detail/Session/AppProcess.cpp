#include "CorvantilePlay/detail/Session/AppProcess.hpp"

#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"
#include "CorvantileDesktop/HTTP/HTTPRoutes.hpp"
#include "CorvantileDesktop/HTTP/detail/WebAddress.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlay/detail/Output/Consoles.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/MarkedTransactions.hpp"
#include "CorvantilePlay/detail/Session/ObservedRouter.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

namespace corvantile::tool {

namespace {

// A name is not resolved: it may lead elsewhere by the time of a request.
bool isOfThisMachine(const std::string& host) {
    return host == "localhost" || host == "[::1]" ||
           (host.starts_with("127.") && host.find_first_not_of("0123456789.") == std::string::npos);
}

DesktopOptions optionsOf(const AppDescription& app, const Device& device, Reporter& reporter,
                         const std::shared_ptr<MarkedTransactions>& transactions) {
    return {.bundleIdentifier = app.bundleIdentifier,
            .stateFolder = device.stateFolder,
            .resourceFolder = app.folder,
            .reportsUnreadableEntries = true,
            .console = std::make_shared<ReportingConsole>(reporter),
            .httpRoutes = device.httpRoutes,
            .ads = device.ads,
            .adjust = device.attribution,
            .store = app.store,
            .decorate = [transactions](Ports& ports) {
                ports.keychain = observed(std::move(ports.keychain), transactions);
            }};
}

std::string switchText(bool isOn) { return isOn ? "on" : "off"; }

} // namespace

AppProcess::AppProcess(const AppDescription& app, const Device& device,
                       const PlayRegistry::LaunchSwitches& switches, Reporter& reporter)
    : reporter_(reporter),
      transactions_(std::make_shared<MarkedTransactions>(reporter)),
      platform_(optionsOf(app, device, reporter, transactions_)) {
    platform_.vault().setLocked(device.isKeychainLocked);
    makeDelegate(app, switches);
    if (Corvantile::dryRun() && app.hasPlugIn("AdjustPlugin"))
        requireLocalDelivery(device.attribution, device.httpRoutes);
    reportStart(app);
    followNetwork();
    makeSinks(app);
}

AppProcess::~AppProcess() = default;

void AppProcess::makeDelegate(const AppDescription& app, const PlayRegistry::LaunchSwitches& switches) {
    if (app.hasStore()) queueWatch_.emplace(reporter_); // before the plug-ins, which act on what it reports
    PluggableApplicationDelegate::Plugins plugIns;
    for (const auto& description : app.plugIns) {
        const auto plugIn = description.make(switches);
        plugIns_.push_back({description.kind.name, plugIn.get()});
        if (description.kind.follow) description.kind.follow(plugIn, reporter_, followed_);
        const auto router = std::dynamic_pointer_cast<AnalyticPluggable>(plugIn);
        if (router && !router_) {
            router_ = std::make_shared<ObservedRouter>(router, transactions_, reporter_);
            plugIns.push_back(router_); // before the router, so that a look-up finds it
        }
        plugIns.push_back(plugIn);
    }
    application().setDelegate(std::make_shared<PluggableApplicationDelegate>(std::move(plugIns)));
}

void AppProcess::reportStart(const AppDescription& app) {
    Names names;
    for (const auto& plugIn : plugIns_) names.push_back(plugIn.kind);
    reporter_.report("host", "process",
                     "starts " + app.name + ": debug " + switchText(Corvantile::debug()) + ", dry run " +
                         switchText(Corvantile::dryRun()) + ", plug-ins " + listed(names),
                     {{"bundleIdentifier", app.bundleIdentifier},
                      {"debug", Corvantile::debug()},
                      {"dryRun", Corvantile::dryRun()},
                      {"plugins", EventValue::List(names.begin(), names.end())}});
    for (const auto& warning : app.consumableWarnings()) reporter_.report("host", "warning", warning);
}

// The framework's listener is registered first and called first: it knows the status before this reports it.
void AppProcess::followNetwork() {
    constexpr std::chrono::seconds timeout{1};
    NetworkReachability::shared()->startListening();
    networkWatch_ = platform_.ports().reachability->make(NetworkReachability::watchedHost);
    const auto tell = [this](NetworkReachabilityStatus status) {
        if (status == NetworkReachabilityStatus::unknown) return; // the framework ignores it as well
        isNetworkReported_ = true;
        reporter_.report("network", "network", describe(status), {{"network", describe(status)}});
    };
    const bool isWatching = networkWatch_->startListening(platform_.ports().queues->main(), tell);
    if (!isWatching || !platform_.runMainLoopUntil([this] { return isNetworkReported_; }, timeout))
        reporter_.report("network", "network", "unknown: this machine does not tell",
                         {{"network", "unknown"}});
}

void AppProcess::makeSinks(const AppDescription& app) {
    bool isRegistered = false;
    for (const auto& description : app.sinks) {
        sinks_.push_back(
            {description.settings.name, description.kind, description.make(description.settings, reporter_)});
        if (!description.registersAtLaunch) continue;
        registerSink(sinks_.back());
        isRegistered = true;
    }
    if (isRegistered) router_->flush();
}

std::string AppProcess::describePlugIn(const PluggableApplicationDelegateService& plugIn) const {
    const PluggableApplicationDelegateService* const identity =
        &plugIn == router_.get() ? router_->router().get() : &plugIn;
    const auto found = std::find_if(plugIns_.begin(), plugIns_.end(),
                                    [&](const PlugIn& known) { return known.identity == identity; });
    if (found == plugIns_.end()) return "a plug-in that is not on the list";
    return found->kind + ", number " + std::to_string(found - plugIns_.begin() + 1) + " of " +
           std::to_string(plugIns_.size());
}

Sink& AppProcess::sink(const std::string& name) {
    Names names;
    for (auto& sink : sinks_) {
        if (sink.name == name) return sink;
        names.push_back(sink.name);
    }
    throw UsageError(unknownName("sink", name, names));
}

void AppProcess::registerSink(Sink& sink) {
    router_->registerSink(sink.name, sink.component);
    const auto times = ++sink.registrations;
    const auto often = times > 1
                           ? " for the " + std::to_string(times) + ". time: it hears everything as often"
                           : std::string();
    reporter_.report("host", "register", "registers sink " + sink.name + " (" + sink.kind + ")" + often,
                     {{"sink", sink.name}, {"type", sink.kind}, {"registrations", times}});
}

void AppProcess::concludeTransactions() { transactions_->concludeAll(); }

void AppProcess::settle() {
    constexpr std::chrono::seconds timeout{1};
    const auto isReached = std::make_shared<bool>(false);
    platform_.ports().queues->main()->async([isReached] { *isReached = true; });
    platform_.runMainLoopUntil([isReached] { return *isReached; }, timeout);
}

std::string describe(NetworkReachabilityStatus status) {
    switch (status) {
    case NetworkReachabilityStatus::unknown: break;
    case NetworkReachabilityStatus::notReachable: return "not reachable";
    case NetworkReachabilityStatus::reachableViaEthernetOrWiFi: return "wifi";
    case NetworkReachabilityStatus::reachableViaCellular: return "cellular";
    }
    return "unknown";
}

void requireLocalDelivery(const AdjustOptions& options, const std::map<std::string, std::string>& routes) {
    const auto endpoint = withEnvironment(options).endpoint;
    if (endpoint.empty()) return;
    HTTPRoutes made;
    for (const auto& [origin, base] : routes) static_cast<void>(made.set(origin, base));
    const auto address = parseWebAddress(made.destination(endpoint));
    if (address && isOfThisMachine(address->host)) return;
    throw UsageError(
        "a dry run holds events back, but not subscriptions (trackIAPSubs passes every filter): it "
        "is refused while the attribution endpoint is " +
        endpoint + ", which is not on this machine; play --server stands in for it");
}

} // namespace corvantile::tool
