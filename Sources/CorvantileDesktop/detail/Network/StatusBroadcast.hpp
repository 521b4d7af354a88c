#pragma once

#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace corvantile {

// One listener on its queue, until `isStopped`. Its manager owns it: nothing posted keeps it alive.
struct StatusSubscription {
    StatusSubscription(std::shared_ptr<DispatchQueue> deliveryQueue,
                       NetworkReachabilityManager::Listener statusListener);

    const std::shared_ptr<DispatchQueue> queue;
    const NetworkReachabilityManager::Listener listener;
    std::atomic<bool> isStopped{false};
    std::optional<NetworkReachabilityStatus> posted; // the broadcast's, under its mutex
};

// Posts the status to each subscription, once known, and then whenever it differs from the last one posted
// there. Threads: any.
class StatusBroadcast {
public:
    void add(const std::shared_ptr<StatusSubscription>& subscription);
    void publish(NetworkReachabilityStatus status);

private:
    void post(const std::shared_ptr<StatusSubscription>& subscription);

    std::mutex mutex_;
    std::optional<NetworkReachabilityStatus> status_;
    std::vector<std::weak_ptr<StatusSubscription>> subscriptions_;
};

} // namespace corvantile
