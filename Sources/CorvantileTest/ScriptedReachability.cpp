#include "CorvantileTest/ScriptedReachability.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <atomic>
#include <utility>

namespace corvantile {

namespace {

using Listener = NetworkReachabilityManager::Listener;
using Status = NetworkReachabilityStatus;

// One call of startListening, until it is stopped or another takes its place.
struct Watch {
    Watch(std::shared_ptr<DispatchQueue> deliveryQueue, Listener statusListener)
        : queue(std::move(deliveryQueue)), listener(std::move(statusListener)) {}

    const std::shared_ptr<DispatchQueue> queue;
    const Listener listener;
    std::atomic<bool> isStopped{false};
};

} // namespace

// What all watchers share. Their managers own the watches: what is posted keeps none alive.
struct ScriptedReachability::Network {
    std::mutex mutex;
    Status status = Status::reachableViaEthernetOrWiFi;
    std::vector<std::weak_ptr<Watch>> watches;
    bool isClosed = false;

    // Call with the mutex held: the order of posting is the order of the changes. The caller keeps the watch
    // alive beyond the lock.
    void post(const std::shared_ptr<Watch>& watch) const {
        watch->queue->async([weak = std::weak_ptr(watch), status = status] {
            if (const auto current = weak.lock(); current && !current->isStopped) current->listener(status);
        });
    }
};

class ScriptedReachability::Manager final : public NetworkReachabilityManager {
public:
    explicit Manager(std::shared_ptr<Network> network) : network_(std::move(network)) {}
    ~Manager() override { stopListening(); }

    bool startListening(std::shared_ptr<DispatchQueue> queue, Listener listener) override {
        const auto watch = std::make_shared<Watch>(std::move(queue), std::move(listener));
        replace(watch);
        return begin(watch);
    }

    void stopListening() override { replace(nullptr); }

private:
    // The former watch goes outside the lock: a listener's end may run user code.
    void replace(std::shared_ptr<Watch> watch) {
        std::unique_lock lock(mutex_);
        watch_.swap(watch);
        lock.unlock();
        if (watch) watch->isStopped = true;
    }

    bool begin(const std::shared_ptr<Watch>& watch) {
        const std::lock_guard lock(network_->mutex);
        if (network_->isClosed) return false;
        network_->watches.push_back(watch);
        network_->post(watch);
        return true;
    }

    const std::shared_ptr<Network> network_;
    std::mutex mutex_;
    std::shared_ptr<Watch> watch_;
};

ScriptedReachability::ScriptedReachability() : network_(std::make_shared<Network>()) {}

ScriptedReachability::~ScriptedReachability() = default;

void ScriptedReachability::set(NetworkReachabilityStatus status) {
    std::vector<std::shared_ptr<Watch>> kept;
    const std::lock_guard lock(network_->mutex);
    if (std::exchange(network_->status, status) == status) return;
    auto& watches = network_->watches;
    for (const auto& weak : watches)
        if (auto watch = weak.lock()) kept.push_back(std::move(watch));
    watches.assign(kept.begin(), kept.end());
    for (const auto& watch : kept) network_->post(watch);
}

void ScriptedReachability::refuse(std::string host) {
    const std::lock_guard lock(mutex_);
    refused_.insert(std::move(host));
}

std::vector<std::string> ScriptedReachability::hosts() const {
    const std::lock_guard lock(mutex_);
    return hosts_;
}

void ScriptedReachability::close() {
    const std::lock_guard lock(network_->mutex);
    network_->isClosed = true;
    network_->watches.clear();
}

std::shared_ptr<NetworkReachabilityManager> ScriptedReachability::make(std::string_view host) {
    const std::lock_guard lock(mutex_);
    const auto& name = hosts_.emplace_back(host);
    if (name.empty() || refused_.count(name) > 0) return nullptr;
    return std::make_shared<Manager>(network_);
}

} // namespace corvantile
