#include "CorvantilePlay/detail/Session/Host.hpp"

#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/AppDeletion.hpp"
#include "CorvantilePlay/detail/Session/FakeServer.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <algorithm>
#include <string>
#include <thread>
#include <utility>

namespace corvantile::tool {

Host::Host(AppDescription app, HostOptions options, Reporter& reporter)
    : app_(std::move(app)),
      options_(std::move(options)),
      device_{.stateFolder = options_.stateFolder.empty() ? defaultStateFolder(app_.bundleIdentifier)
                                                          : options_.stateFolder,
              .attribution = app_.attribution,
              .ads = app_.ads,
              .httpRoutes = app_.httpRoutes},
      reporter_(reporter) {
    if (options_.isFresh) deleteState();
    if (app_.hasServer || options_.hasServer) startServer();
}

Host::~Host() = default;

void Host::startServer() {
    server_ = std::make_unique<FakeServer>(reporter_);
    device_.attribution.endpoint = server_->address();
    device_.httpRoutes["https://api-adservices.apple.com"] = server_->address();
}

void Host::deleteState() {
    const auto deleted = deleteDevice(device_.stateFolder);
    reporter_.report("host", "fresh",
                     deleted.empty() ? "begins with nothing: there was nothing before"
                                     : "begins with nothing: deletes " + listed(deleted),
                     {{"deleted", EventValue::List(deleted.begin(), deleted.end())}});
}

void Host::launch(const PlayRegistry::LaunchSwitches& asked) {
    const PlayRegistry::LaunchSwitches switches{.debug = asked.debug || options_.switches.debug,
                                                .dryRun = asked.dryRun || options_.switches.dryRun};
    if (process_) throw UsageError("the app runs already: relaunch ends it and starts it again");
    checkSwitches(switches);
    process_.emplace(app_, device_, switches, reporter_);
    const bool answer = process_->delegate().didFinishLaunchingWithOptions(process_->application(), {});
    lifeCycle_ = LifeCycle::inactive;
    reporter_.report("host", "launch", std::string("didFinishLaunching → ") + (answer ? "true" : "false"),
                     {{"result", answer}});
}

void Host::checkSwitches(const PlayRegistry::LaunchSwitches& switches) const {
    if ((switches.debug || switches.dryRun) && !app_.hasPlugIn("DebugPlugin"))
        throw UsageError("debug and dry run are switched on by a DebugPlugin, and this app has none");
    if (switches.dryRun && app_.hasPlugIn("AdjustPlugin"))
        requireLocalDelivery(device_.attribution, device_.httpRoutes);
}

void Host::activate() {
    take({"activate", LifeCycle::inactive, LifeCycle::active, "didBecomeActive",
          &UIApplicationDelegate::didBecomeActive});
}

void Host::resign() {
    take({"resign", LifeCycle::active, LifeCycle::inactive, "willResignActive",
          &UIApplicationDelegate::willResignActive});
}

void Host::enterBackground() {
    take({"background", LifeCycle::inactive, LifeCycle::background, "didEnterBackground",
          &UIApplicationDelegate::didEnterBackground});
}

void Host::enterForeground() {
    take({"foreground", LifeCycle::background, LifeCycle::inactive, "willEnterForeground",
          &UIApplicationDelegate::willEnterForeground});
}

void Host::take(const Step& step) {
    if (lifeCycle_ != step.from)
        throw UsageError(std::string(step.command) + " is for an app that is " +
                         std::string(describe(step.from)) + "; this one is " +
                         std::string(describe(lifeCycle_)) + ": " + std::string(nextCommands(lifeCycle_)));
    auto& running = process();
    (running.delegate().*step.callback)(running.application());
    if (step.from == LifeCycle::active || step.to == LifeCycle::active)
        running.platform().adjust().setActive(step.to == LifeCycle::active);
    lifeCycle_ = step.to;
    reporter_.report("host", std::string(step.command), std::string(step.name));
}

void Host::terminate() {
    auto& running = process();
    running.delegate().willTerminate(running.application());
    reporter_.report("host", "terminate", "willTerminate");
    running.settle();
    process_.reset();
    lifeCycle_ = LifeCycle::notRunning;
    reporter_.report("host", "process", "has ended " + app_.name);
}

void Host::relaunch(const PlayRegistry::LaunchSwitches& switches) {
    checkSwitches(switches);
    if (process_) terminate();
    launch(switches);
}

void Host::reinstall() {
    if (process_) {
        process_.reset();
        lifeCycle_ = LifeCycle::notRunning;
        reporter_.report("host", "process", "kills " + app_.name);
    }
    const auto [deleted, kept] = deleteApp(device_.stateFolder);
    reporter_.report("host", "reinstall",
                     "reinstalls " + app_.name + ": deletes " + listed(deleted) +
                         "; what stays: " + listed(kept),
                     {{"deleted", EventValue::List(deleted.begin(), deleted.end())},
                      {"kept", EventValue::List(kept.begin(), kept.end())}});
}

void Host::setKeychainLocked(bool locked) {
    device_.isKeychainLocked = locked;
    if (process_) process_->platform().vault().setLocked(locked);
    reporter_.report("host", locked ? "lock" : "unlock",
                     locked ? "locks the keychain: it reads as empty and refuses to save"
                            : "unlocks the keychain");
}

void Host::setOnline(bool isOnline) {
    device_.attribution.isOffline = !isOnline;
    reporter_.report("host", isOnline ? "online" : "offline",
                     isOnline ? "lets packages leave" : "lets no package leave: they stay in the outbox");
    if (process_) process_->platform().adjust().setOnline(isOnline);
}

void Host::setAds(const AdsOptions& ads) {
    device_.ads = ads;
    if (process_) process_->platform().ads().set(ads);
}

FakeServer& Host::server() {
    if (server_) return *server_;
    throw UsageError("this play has no server: call play --server, or say \"server\": true in app.json");
}

void Host::failMissing(const std::string& service) const {
    throw UsageError("this app has no plug-in that offers " + service + "; one would be " +
                     listed(kindsOffering(app_.registry, service)));
}

AppProcess& Host::process() {
    if (!process_)
        throw UsageError("the app does not run: " + std::string(nextCommands(LifeCycle::notRunning)));
    return *process_;
}

void Host::runLoop(const std::function<bool()>& done, std::chrono::nanoseconds duration) {
    const auto isOver = [&] { return done() || (options_.isInterrupted && options_.isInterrupted()); };
    if (process_) {
        process_->platform().runMainLoopUntil(isOver, duration);
        return;
    }
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds askAgain{5};
    const auto begin = Clock::now();
    while (!isOver() && Clock::now() - begin < duration)
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(askAgain, duration));
}

void Host::settle() {
    if (process_) process_->settle();
}

void Host::runUntilIdle() {
    if (!app_.hasStore()) return;
    constexpr std::chrono::milliseconds moment{80};
    constexpr int mostMoments = 60;
    for (int passed = 0; passed < mostMoments; ++passed) {
        const auto before = reporter_.count();
        runLoop([] { return false; }, moment);
        if (reporter_.count() != before) continue;
        const bool isInterrupted = options_.isInterrupted && options_.isInterrupted();
        if (process_ && !isInterrupted) process_->concludeTransactions();
        return;
    }
}

std::string_view describe(LifeCycle lifeCycle) {
    switch (lifeCycle) {
    case LifeCycle::notRunning: return "not running";
    case LifeCycle::inactive: return "inactive";
    case LifeCycle::active: return "active";
    case LifeCycle::background: return "in the background";
    }
    return {};
}

std::string_view nextCommands(LifeCycle lifeCycle) {
    switch (lifeCycle) {
    case LifeCycle::notRunning: return "launch starts it";
    case LifeCycle::inactive: return "activate or background come next";
    case LifeCycle::active: return "resign comes next";
    case LifeCycle::background: return "foreground comes next";
    }
    return {};
}

} // namespace corvantile::tool
