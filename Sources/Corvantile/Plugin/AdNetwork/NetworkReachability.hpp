#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"

#include <atomic>
#include <memory>
#include <string_view>

namespace corvantile {

// The latest known network status: whether the watched host can be reached, and over which kind of link.
// It is no plug-in: until the host calls `startListening`, which it does once at start-up, nothing is known.
// Threads: any; the status changes on main.
class CORVANTILE_API NetworkReachability final : public std::enable_shared_from_this<NetworkReachability> {
public:
    // A public host whose name is reserved, so that it will not move. A platform that refuses to watch it
    // ends the process.
    static constexpr std::string_view watchedHost = "www.example.com";

    ~NetworkReachability();

    // The process's own, made on first use.
    [[nodiscard]] static const std::shared_ptr<NetworkReachability>& shared();

    // Follows the status until the process ends. Does not change it inside the call.
    void startListening();

    // Once known it is never `unknown` again: what is reported as unknown leaves it as it is.
    [[nodiscard]] NetworkReachabilityStatus networkStatus() const {
        return networkStatus_.load(std::memory_order_relaxed);
    }

private:
    struct Shared;

    explicit NetworkReachability(std::shared_ptr<NetworkReachabilityManager> reachability);
    void update(NetworkReachabilityStatus status);

    const std::shared_ptr<NetworkReachabilityManager> reachability_;
    std::atomic<NetworkReachabilityStatus> networkStatus_{NetworkReachabilityStatus::unknown};
};

} // namespace corvantile
