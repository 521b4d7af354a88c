#include "Tools/corvantile/AppProcess.hpp"

#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "DesktopPlatform/Keychain/Vault.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Tools/corvantile/Delivery.hpp"
#include "Tools/corvantile/NearestName.hpp"
#include "Tools/corvantile/Refusal.hpp"
#include "Tools/corvantile/Reporter.hpp"
#include "Tools/corvantile/ReportingConsole.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

namespace corvantile::tool {

namespace {

DesktopOptions optionsOf(const AppDescription& app, const Device& device, std::shared_ptr<Console> console) {
    return {.bundleIdentifier = app.bundleIdentifier,
            .stateFolder = device.stateFolder,
            .resourceFolder = app.folder,
            .reportsUnreadableEntries = true,
            .console = std::move(console),
            .httpRoutes = device.httpRoutes,
            .ads = device.ads,
            .adjust = device.attribution,
            .store = app.store};
}

std::string switchText(bool isOn) { return isOn ? "on" : "off"; }

} // namespace

AppProcess::AppProcess(const AppDescription& app, const Device& device, const LaunchSwitches& switches,
                       Reporter& reporter)
    : reporter_(reporter),
      console_(std::make_shared<ReportingConsole>(reporter)),
      platform_(optionsOf(app, device, console_)) {
    platform_.vault().setLocked(device.isKeychainLocked);
    makeDelegate(app, switches);
    if (Corvantile::dryRun() && app.hasPlugIn("AdjustPlugin"))
        requireLocalDelivery(device.attribution, device.httpRoutes);
    tellStart(app);
    followNetwork();
    makeSinks(app);
}

AppProcess::~AppProcess() = default;

void AppProcess::makeDelegate(const AppDescription& app, const LaunchSwitches& switches) {
    if (app.hasStore()) queueWatch_.emplace(reporter_); // first: a batch is told before anybody acts on it
    PluggableApplicationDelegate::Plugins plugIns;
    for (const auto& description : app.plugIns) {
        plugIns.push_back(description.make(switches));
        plugIns_.push_back({description.kind, plugIns.back().get()});
        if (description.follow) description.follow(plugIns.back(), reporter_, followed_);
    }
    application().setDelegate(std::make_shared<PluggableApplicationDelegate>(std::move(plugIns)));
}

void AppProcess::tellStart(const AppDescription& app) {
    Names names;
    for (const auto& plugIn : plugIns_) names.push_back(plugIn.kind);
    reporter_.tell("host", "process",
                   "starts " + app.name + ": debug " + switchText(Corvantile::debug()) + ", dry run " +
                       switchText(Corvantile::dryRun()) + ", plug-ins " + listed(names),
                   {{"bundleIdentifier", app.bundleIdentifier},
                    {"debug", Corvantile::debug()},
                    {"dryRun", Corvantile::dryRun()},
                    {"plugins", EventValue::List(names.begin(), names.end())}});
}

// The framework's own status is to be known before ours is told: it listens first, and both are served in
// that order.
void AppProcess::followNetwork() {
    constexpr std::chrono::seconds patience{1};
    NetworkReachability::shared()->startListening();
    networkWatch_ = platform_.ports().reachability->make(NetworkReachability::watchedHost);
    const auto tell = [this](NetworkReachabilityStatus status) {
        if (status == NetworkReachabilityStatus::unknown) return; // the framework passes it over as well
        isNetworkTold_ = true;
        reporter_.tell("network", "network", describe(status), {{"network", describe(status)}});
    };
    const bool isWatching = networkWatch_->startListening(platform_.ports().queues->main(), tell);
    if (!isWatching || !platform_.runMainLoopUntil([this] { return isNetworkTold_; }, patience))
        reporter_.tell("network", "network", "unknown: this machine does not tell", {{"network", "unknown"}});
}

void AppProcess::makeSinks(const AppDescription& app) {
    for (const auto& description : app.sinks) {
        sinks_.push_back({description.name, description.kind, description.make(description, reporter_)});
        if (description.registersAtLaunch) registerSink(sinks_.back());
    }
    if (hasRegisteredSink()) Corvantile::queryAppDelegate<AnalyticPluggable>()->flush();
}

std::string AppProcess::describePlugIn(const PluggableApplicationDelegateService& plugIn) const {
    const auto found = std::find_if(plugIns_.begin(), plugIns_.end(),
                                    [&](const PlugIn& known) { return known.identity == &plugIn; });
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
    throw Refusal(unknownName("sink", name, names));
}

void AppProcess::registerSink(Sink& sink) {
    Corvantile::queryAppDelegate<AnalyticPluggable>()->registerComponents({sink.component});
    const auto times = ++sink.registrations;
    const auto often = times > 1
                           ? " for the " + std::to_string(times) + ". time: it hears everything as often"
                           : std::string();
    reporter_.tell("host", "register", "registers sink " + sink.name + " (" + sink.kind + ")" + often,
                   {{"sink", sink.name}, {"type", sink.kind}, {"registrations", times}});
}

bool AppProcess::hasRegisteredSink() const {
    return std::any_of(sinks_.begin(), sinks_.end(), [](const Sink& sink) { return sink.registrations > 0; });
}

std::size_t AppProcess::consoleEvents() const { return console_->eventCount(); }

void AppProcess::settle() {
    constexpr std::chrono::seconds patience{1};
    const auto isReached = std::make_shared<bool>(false);
    platform_.ports().queues->main()->async([isReached] { *isReached = true; });
    platform_.runMainLoopUntil([isReached] { return *isReached; }, patience);
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

} // namespace corvantile::tool
