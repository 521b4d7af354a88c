#pragma once

#include "CorvantileDesktop/DesktopFeatures.hpp"
#include "CorvantileDesktop/DesktopOptions.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Platform.hpp"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>

namespace corvantile {

class HTTPRoutes;
class LocalAds;
class LocalStore;
class OutboxAdjust;
class Vault;

// The platform of a Linux machine: real queues, console, clock, files and network status.
// The thread that constructs it is the main thread: the main loop runs there, and it ends there, while no
// loop runs. Items of the main queue run only inside the loop; what is still queued at the end is destroyed
// unrun. Signals: workers block those that a host handles itself (interrupt, terminate, hang-up and their
// like), so that they reach a thread of the host. No member is async-signal-safe, stopMainLoop included: a
// host that ends on a signal waits for it on a thread of its own (sigwait) and stops the loop from there. A
// child that a host forks may only exec.
//
// A build may leave out HTTP, the store or the outbox (DesktopFeatures.hpp). The port is still there: a
// request fails with an NSError that says why, a store fails whatever it is asked for and sells nothing, and
// the attribution SDK reports once on the console that it delivers nothing.
class CORVANTILE_API DesktopPlatform final : public Platform {
public:
    explicit DesktopPlatform(DesktopOptions options = {});
    ~DesktopPlatform() override;

    // Where this process's state lives; empty when nothing lasts.
    [[nodiscard]] const std::filesystem::path& stateFolder() const { return stateFolder_; }

    // The keychain under its own type, to lock it and to look inside. Threads: any.
    [[nodiscard]] Vault& vault() const;

#if CORVANTILE_DESKTOP_HTTP
    // Where requests go: to a server of the host's own, for one. Threads: any.
    [[nodiscard]] HTTPRoutes& httpRoutes() const;
#endif

    // The ads services under their own type, to set their answers. Threads: any.
    [[nodiscard]] LocalAds& ads() const;

#if CORVANTILE_DESKTOP_OUTBOX
    // The attribution SDK under its own type, to set whether the app is active and online, and to look at its
    // packages. Threads: any.
    [[nodiscard]] OutboxAdjust& adjust() const;
#endif

#if CORVANTILE_DESKTOP_STORE
    // The store behind the payment queue and the requests, to act as the store and its customers. Threads:
    // any.
    [[nodiscard]] LocalStore& store() const;
#endif

    // Runs the main queue until `stopMainLoop`. Main thread only, not from inside an item.
    void runMainLoop();

    // Runs the main queue until `done` returns true or `timeout` has passed, and returns what `done` returned
    // last. Calls it first, after each item, and at intervals while idle, since `done` may depend on other
    // threads.
    bool runMainLoopUntil(const std::function<bool()>& done, std::chrono::nanoseconds timeout);

    // Runs the main queue for as long as `duration`.
    void runMainLoopFor(std::chrono::nanoseconds duration);

    // Ends the loop after the item that is running; the rest stays queued. While no loop runs, the next one
    // ends at its start. Threads: any, also from an item.
    void stopMainLoop();

private:
    struct Parts;
    DesktopPlatform(DesktopOptions options, std::unique_ptr<Parts> parts);

    void stop() override;
    void reportOutlived(int count) override;

    const std::filesystem::path stateFolder_;
    std::unique_ptr<Parts> parts_;
};

} // namespace corvantile
