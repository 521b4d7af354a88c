#include "CorvantileDesktop/detail/Network/NetlinkReachabilityManager.hpp"

#include "CorvantileDesktop/detail/Network/RouteWatcher.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace corvantile {

namespace {

constexpr std::size_t longestName = 253;

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '-' || c == '_';
}

bool isIPv6Address(std::string_view text) {
    in6_addr address{};
    return inet_pton(AF_INET6, std::string(text).c_str(), &address) == 1;
}

// A host's name or address: letters, digits, points, hyphens and underscores, or an IPv6 address. A URL or a
// port is neither.
bool isHostName(std::string_view host) {
    if (host.empty() || host.size() > longestName) return false;
    if (std::all_of(host.begin(), host.end(), isNameCharacter)) return true;
    return host.find('\0') == std::string_view::npos && isIPv6Address(host);
}

} // namespace

NetlinkReachabilityManager::NetlinkReachabilityManager(std::shared_ptr<RouteWatcher> watcher,
                                                       std::shared_ptr<StatusBroadcast> broadcast)
    : watcher_(std::move(watcher)), broadcast_(std::move(broadcast)) {}

NetlinkReachabilityManager::~NetlinkReachabilityManager() { stopListening(); }

bool NetlinkReachabilityManager::startListening(std::shared_ptr<DispatchQueue> queue, Listener listener) {
    const auto subscription = std::make_shared<StatusSubscription>(std::move(queue), std::move(listener));
    replace(subscription);
    if (!watcher_->start()) return false;
    broadcast_->add(subscription);
    return true;
}

void NetlinkReachabilityManager::stopListening() { replace(nullptr); }

// The former one goes outside the lock: a listener's end may run user code.
void NetlinkReachabilityManager::replace(std::shared_ptr<StatusSubscription> subscription) {
    {
        const std::lock_guard lock(mutex_);
        subscription_.swap(subscription);
    }
    if (subscription) subscription->isStopped = true;
}

NetlinkReachabilityManagers::NetlinkReachabilityManagers(asio::io_context& context)
    : broadcast_(std::make_shared<StatusBroadcast>()),
      watcher_(
          std::make_shared<RouteWatcher>(context, [broadcast = broadcast_](NetworkReachabilityStatus status) {
              broadcast->publish(status);
          })) {}

std::shared_ptr<NetworkReachabilityManager> NetlinkReachabilityManagers::make(std::string_view host) {
    if (!isHostName(host)) return nullptr;
    return std::make_shared<NetlinkReachabilityManager>(watcher_, broadcast_);
}

void NetlinkReachabilityManagers::close() { watcher_->close(); }

} // namespace corvantile
