#include "Tools/corvantile/Host.hpp"

#include "Platform/Application/UIApplicationDelegate.hpp"
#include "Tools/corvantile/Refusal.hpp"
#include "Tools/corvantile/Reporter.hpp"

#include <algorithm>
#include <string>
#include <thread>
#include <utility>

namespace corvantile::tool {

namespace {

std::string_view wayOut(LifeCycle lifeCycle) {
    switch (lifeCycle) {
    case LifeCycle::notRunning: return "launch starts it";
    case LifeCycle::inactive: return "activate or background come next";
    case LifeCycle::active: return "resign comes next";
    case LifeCycle::background: return "foreground comes next";
    }
    return {};
}

} // namespace

std::string_view describe(LifeCycle lifeCycle) {
    switch (lifeCycle) {
    case LifeCycle::notRunning: return "not running";
    case LifeCycle::inactive: return "inactive";
    case LifeCycle::active: return "active";
    case LifeCycle::background: return "in the background";
    }
    return {};
}

Host::Host(AppDescription app, HostOptions options, Reporter& reporter)
    : app_(std::move(app)), options_(std::move(options)), reporter_(reporter) {}

Host::~Host() = default;

void Host::launch(const LaunchSwitches& asked) {
    const LaunchSwitches switches{.debug = asked.debug || options_.switches.debug,
                                  .dryRun = asked.dryRun || options_.switches.dryRun};
    if (process_) throw Refusal("the app runs already: relaunch ends it and starts it again");
    checkSwitches(switches);
    process_.emplace(app_, options_.stateFolder, switches, reporter_);
    const bool answer = process_->delegate().didFinishLaunchingWithOptions(process_->application(), {});
    lifeCycle_ = LifeCycle::inactive;
    reporter_.tell("host", "launch", std::string("didFinishLaunching → ") + (answer ? "true" : "false"),
                   {{"answer", answer}});
}

void Host::checkSwitches(const LaunchSwitches& switches) const {
    if ((switches.debug || switches.dryRun) && !app_.hasPlugIn("DebugPlugin"))
        throw Refusal("debug and dry run are switched on by a DebugPlugin, and this app has none");
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
        throw Refusal(std::string(step.command) + " is for an app that is " +
                      std::string(describe(step.from)) + "; this one is " +
                      std::string(describe(lifeCycle_)) + ": " + std::string(wayOut(lifeCycle_)));
    auto& running = process();
    (running.delegate().*step.callback)(running.application());
    lifeCycle_ = step.to;
    reporter_.tell("host", std::string(step.command), std::string(step.name));
}

void Host::terminate() {
    auto& running = process();
    running.delegate().willTerminate(running.application());
    reporter_.tell("host", "terminate", "willTerminate");
    running.settle();
    process_.reset();
    lifeCycle_ = LifeCycle::notRunning;
    reporter_.tell("host", "process", "has ended " + app_.name);
}

void Host::relaunch(const LaunchSwitches& switches) {
    checkSwitches(switches);
    if (process_) terminate();
    launch(switches);
}

AppProcess& Host::process() {
    if (!process_) throw Refusal("the app does not run: " + std::string(wayOut(LifeCycle::notRunning)));
    return *process_;
}

void Host::goOn(const std::function<bool()>& done, std::chrono::nanoseconds duration) {
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

} // namespace corvantile::tool
