#pragma once

#include "Tools/corvantile/AppProcess.hpp"
#include "Tools/corvantile/Description/AppDescription.hpp"

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace corvantile::tool {

class Reporter;

// Where an app stands in its life.
enum class LifeCycle { notRunning, inactive, active, background };

struct HostOptions {
    std::filesystem::path stateFolder = {};   // empty: the app's own, under the user's state folder
    LaunchSwitches switches = {};             // for every launch
    std::function<bool()> isInterrupted = {}; // ends waits; asked often
};

// What the phone does around an app: launches it, takes it through its life, ends it. At most one process of
// the app runs at a time. What the app's life does not allow is a Refusal. Threads: one.
class Host {
public:
    Host(AppDescription app, HostOptions options, Reporter& reporter);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host();

    void launch(const LaunchSwitches& switches);
    void activate();
    void resign();
    void enterBackground();
    void enterForeground();
    void terminate();
    // Ends the app in good order, if it runs, and launches it again on the state that it left.
    void relaunch(const LaunchSwitches& switches);

    [[nodiscard]] const AppDescription& app() const { return app_; }
    [[nodiscard]] Reporter& reporter() { return reporter_; }
    [[nodiscard]] LifeCycle lifeCycle() const { return lifeCycle_; }
    // The running app; refused when it does not run.
    [[nodiscard]] AppProcess& process();

    // Lets the app go on until `done` holds, `duration` has passed or an interruption comes. The app need not
    // run.
    void goOn(const std::function<bool()>& done, std::chrono::nanoseconds duration);
    // Runs what the app's main queue holds by now.
    void settle();

private:
    using Callback = void (UIApplicationDelegate::*)(UIApplication&);
    struct Step {
        std::string_view command;
        LifeCycle from;
        LifeCycle to;
        std::string_view name;
        Callback callback;
    };

    void take(const Step& step);
    void checkSwitches(const LaunchSwitches& switches) const;

    const AppDescription app_;
    const HostOptions options_;
    Reporter& reporter_;
    LifeCycle lifeCycle_ = LifeCycle::notRunning;
    std::optional<AppProcess> process_;
};

[[nodiscard]] std::string_view describe(LifeCycle lifeCycle);

} // namespace corvantile::tool
