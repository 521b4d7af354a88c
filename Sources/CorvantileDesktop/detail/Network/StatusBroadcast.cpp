#include "CorvantileDesktop/detail/Network/StatusBroadcast.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <utility>

namespace corvantile {

StatusSubscription::StatusSubscription(std::shared_ptr<DispatchQueue> deliveryQueue,
                                       NetworkReachabilityManager::Listener statusListener)
    : queue(std::move(deliveryQueue)), listener(std::move(statusListener)) {}

void StatusBroadcast::add(const std::shared_ptr<StatusSubscription>& subscription) {
    const std::lock_guard lock(mutex_);
    std::erase_if(subscriptions_, [](const auto& weak) { return weak.expired(); });
    subscriptions_.push_back(subscription);
    post(subscription);
}

void StatusBroadcast::publish(NetworkReachabilityStatus status) {
    std::vector<std::shared_ptr<StatusSubscription>> kept; // beyond the lock: the last owner runs user code
    const std::lock_guard lock(mutex_);
    status_ = status;
    for (const auto& weak : subscriptions_)
        if (auto subscription = weak.lock()) kept.push_back(std::move(subscription));
    subscriptions_.assign(kept.begin(), kept.end());
    for (const auto& subscription : kept) post(subscription);
}

// Under the lock, so that the order of posting is the order of the changes.
void StatusBroadcast::post(const std::shared_ptr<StatusSubscription>& subscription) {
    if (!status_ || subscription->posted == status_) return;
    subscription->posted = status_;
    subscription->queue->async([weak = std::weak_ptr(subscription), status = *status_] {
        if (const auto current = weak.lock(); current && !current->isStopped) current->listener(status);
    });
}

} // namespace corvantile
