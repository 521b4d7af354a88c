#pragma once

#include "CorvantileDesktop/detail/Network/StatusBroadcast.hpp"
#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"

#include <asio/io_context.hpp>

#include <memory>
#include <mutex>
#include <string_view>

namespace corvantile {

class RouteWatcher;

// Reachability from the kernel's routing tables. It is the same for every host: a way out of this machine.
class NetlinkReachabilityManager final : public NetworkReachabilityManager {
public:
    NetlinkReachabilityManager(std::shared_ptr<RouteWatcher> watcher,
                               std::shared_ptr<StatusBroadcast> broadcast);
    ~NetlinkReachabilityManager() override;

    bool startListening(std::shared_ptr<DispatchQueue> queue, Listener listener) override;
    void stopListening() override;

private:
    void replace(std::shared_ptr<StatusSubscription> subscription);

    const std::shared_ptr<RouteWatcher> watcher_;
    const std::shared_ptr<StatusBroadcast> broadcast_;
    std::mutex mutex_;
    std::shared_ptr<StatusSubscription> subscription_;
};

// One watcher for all managers, begun by the first that listens.
class NetlinkReachabilityManagers final : public NetworkReachabilityManagers {
public:
    explicit NetlinkReachabilityManagers(asio::io_context& context);

    // Null when `host` could be no host's name.
    [[nodiscard]] std::shared_ptr<NetworkReachabilityManager> make(std::string_view host) override;

    // Ends the watch. No thread runs the context any more.
    void close();

private:
    const std::shared_ptr<StatusBroadcast> broadcast_;
    const std::shared_ptr<RouteWatcher> watcher_;
};

} // namespace corvantile
