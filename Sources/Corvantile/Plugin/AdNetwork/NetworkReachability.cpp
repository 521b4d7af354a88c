#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Platform.hpp"

#include <string>
#include <utility>

namespace corvantile {

namespace {

std::shared_ptr<NetworkReachabilityManager> watcher() {
    auto manager = Platform::current().ports().reachability->make(NetworkReachability::watchedHost);
    if (!manager)
        fatalError("The platform refuses to watch " + std::string(NetworkReachability::watchedHost) + ".");
    return manager;
}

} // namespace

struct NetworkReachability::Shared {
    const std::shared_ptr<NetworkReachability> instance{new NetworkReachability(watcher())};
};

NetworkReachability::NetworkReachability(std::shared_ptr<NetworkReachabilityManager> reachability)
    : reachability_(std::move(reachability)) {}

NetworkReachability::~NetworkReachability() = default;

const std::shared_ptr<NetworkReachability>& NetworkReachability::shared() {
    return Platform::current().process().record<Shared>().instance;
}

void NetworkReachability::startListening() {
    // Refused or not, there is nothing else to do about it: the status then stays what it is.
    static_cast<void>(reachability_->startListening(
        DispatchQueue::main(), [weak = weak_from_this()](NetworkReachabilityStatus status) {
            if (const auto self = weak.lock()) self->update(status);
        }));
}

void NetworkReachability::update(NetworkReachabilityStatus status) {
    switch (status) {
    case NetworkReachabilityStatus::unknown: return;
    case NetworkReachabilityStatus::notReachable:
    case NetworkReachabilityStatus::reachableViaEthernetOrWiFi:
    case NetworkReachabilityStatus::reachableViaCellular:
        networkStatus_.store(status, std::memory_order_relaxed);
    }
}

} // namespace corvantile
