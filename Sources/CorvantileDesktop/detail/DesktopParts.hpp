#pragma once

#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/detail/Network/NetlinkReachabilityManager.hpp"
#include "CorvantileDesktop/detail/Queues/Executors.hpp"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace corvantile {

class DispatchQueues;
class SQLiteUserDefaults;

// The ports under their own types, for the platform itself.
struct DesktopPlatform::Parts {
    Parts();
    ~Parts();

    // Makes everything that the options ask for. Once.
    [[nodiscard]] Ports ports(const DesktopOptions& options);

    const std::shared_ptr<Executors> executors;
    const std::shared_ptr<NetlinkReachabilityManagers> reachability;
    std::shared_ptr<Vault> vault;
    std::shared_ptr<SQLiteUserDefaults> userDefaults;
    std::shared_ptr<LocalAds> ads;
    std::function<void()> closeHTTP = [] {};
    // Null where this build has none.
    std::shared_ptr<HTTPRoutes> httpRoutes;
    std::shared_ptr<OutboxAdjust> adjust;
    std::shared_ptr<LocalStore> store;

private:
    // Each is defined in two sources, Parts/With….cpp and Parts/Without….cpp, of which the build takes one.
    void addHTTP(Ports& made, const DesktopOptions& options);
    void addAdjust(Ports& made, const DesktopOptions& options);
    void addStore(Ports& made, const DesktopOptions& options);
};

// A file of the state folder. Empty where nothing lasts.
[[nodiscard]] std::filesystem::path inState(const DesktopOptions& options, const char* name);

// Work that empties a log waits a moment, in a queue of its own, so that it ends as queues do: unrun.
[[nodiscard]] std::function<void(std::function<void()>)> inBackground(DispatchQueues& queues,
                                                                      const std::string& label);

} // namespace corvantile
