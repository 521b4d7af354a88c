#pragma once

#include "Corvantile/Corvantile.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Session/AppProcess.hpp"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile::tool {

class FakeServer;
class Reporter;

enum class LifeCycle { notRunning, inactive, active, background };

[[nodiscard]] std::string_view describe(LifeCycle lifeCycle);

// The commands that an app in this state takes, for an error message.
[[nodiscard]] std::string_view nextCommands(LifeCycle lifeCycle);

struct HostOptions {
    std::filesystem::path stateFolder = {};     // empty: the app's own, under the user's state folder
    PlayRegistry::LaunchSwitches switches = {}; // for every launch
    std::function<bool()> isInterrupted = {};   // ends waits; asked often
    bool hasServer = false;                     // played, whatever the description says
    bool isFresh = false;                       // begins with an empty state folder
};

// What the phone does around an app: launches it, takes it through its life, ends it. At most one process of
// the app runs at a time. What the app's life does not allow is a UsageError. Threads: one.
class Host {
public:
    Host(AppDescription app, HostOptions options, Reporter& reporter);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host();

    void launch(const PlayRegistry::LaunchSwitches& switches);
    void activate();
    void resign();
    void enterBackground();
    void enterForeground();
    void terminate();
    // Ends the app in good order, if it runs, and launches it again on the state that it left.
    void relaunch(const PlayRegistry::LaunchSwitches& switches);
    // Deletes the app, which ends it without a callback, and what goes with it. The keychain stays.
    void reinstall();

    [[nodiscard]] const std::filesystem::path& stateFolder() const { return device_.stateFolder; }

    // Lasts until it is set again, through any number of processes.
    void setKeychainLocked(bool locked);
    [[nodiscard]] bool isKeychainLocked() const { return device_.isKeychainLocked; }

    // Whether the attribution SDK's packages may leave. Lasts as the keychain's lock does.
    void setOnline(bool isOnline);
    // What the ads services say from now on, through any number of processes.
    void setAds(const AdsOptions& ads);
    [[nodiscard]] const Device& device() const { return device_; }
    // The fake server; a UsageError without one.
    [[nodiscard]] FakeServer& server();

    [[nodiscard]] const AppDescription& app() const { return app_; }
    [[nodiscard]] Reporter& reporter() { return reporter_; }
    [[nodiscard]] LifeCycle lifeCycle() const { return lifeCycle_; }
    // A UsageError when the app does not run.
    [[nodiscard]] AppProcess& process();
    // The running app's plug-in that offers the protocol; a UsageError when the app does not run or has none.
    template <class Protocol>
    [[nodiscard]] std::shared_ptr<Protocol> service() {
        static_cast<void>(process());
        if (auto found = Corvantile::queryAppDelegate<Protocol>()) return found;
        failMissing(std::string(Protocol::typeName));
    }

    // Lets the app go on until `done` holds, `duration` has passed or an interruption comes. The app need not
    // run.
    void runLoop(const std::function<bool()>& done, std::chrono::nanoseconds duration);
    // Runs what the app's main queue holds by now.
    void settle();
    // Runs an app with a store until nothing is reported for a moment.
    void runUntilIdle();

private:
    using Callback = void (UIApplicationDelegate::*)(UIApplication&);
    struct Step {
        std::string_view command;
        LifeCycle from;
        LifeCycle to;
        std::string_view name;
        Callback callback;
    };

    void startServer();
    void deleteState();
    void take(const Step& step);
    void checkSwitches(const PlayRegistry::LaunchSwitches& switches) const;
    [[noreturn]] void failMissing(const std::string& service) const;

    const AppDescription app_;
    const HostOptions options_;
    Device device_;
    Reporter& reporter_;
    LifeCycle lifeCycle_ = LifeCycle::notRunning;
    std::unique_ptr<FakeServer> server_; // null: none. Outlives the app's process.
    std::optional<AppProcess> process_;
};

} // namespace corvantile::tool
