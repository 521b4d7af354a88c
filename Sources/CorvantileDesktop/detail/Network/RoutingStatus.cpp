#include "CorvantileDesktop/detail/Network/RoutingStatus.hpp"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>

#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <sys/socket.h>

namespace corvantile {

namespace {

using Links = std::vector<NetworkLink>;

bool isAnyOf(std::string_view text, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), text) != names.end();
}

bool beginsWithAnyOf(std::string_view text, std::initializer_list<std::string_view> beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&](std::string_view beginning) { return text.starts_with(beginning); });
}

// "ww" begins every name that the system gives to a mobile broadband device: wwan0, wwp0s20f0u3.
bool isCellular(const NetworkLink& link) {
    return link.hardwareType == ARPHRD_PPP || link.hardwareType == ARPHRD_RAWIP ||
           isAnyOf(link.kind, {"wwan", "rmnet"}) || link.deviceType == "wwan" ||
           beginsWithAnyOf(link.name, {"ww", "rmnet", "ppp"});
}

bool isUp(const NetworkLink& link) {
    const bool works = (link.flags & IFF_UP) != 0 && (link.flags & IFF_RUNNING) != 0;
    return works && (link.flags & IFF_LOOPBACK) == 0;
}

bool isDefault(const NetworkRoute& route) {
    return route.prefixLength == 0 && route.type == RTN_UNICAST && route.table == RT_TABLE_MAIN &&
           (route.family == AF_INET || route.family == AF_INET6);
}

const NetworkLink* linkOf(const NetworkRoute::Hop& hop, const Links& links) {
    if ((hop.flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN)) != 0) return nullptr;
    const auto found = std::find_if(links.begin(), links.end(),
                                    [&](const NetworkLink& link) { return link.index == hop.link; });
    return found != links.end() && isUp(*found) ? &*found : nullptr;
}

} // namespace

NetworkReachabilityStatus reachabilityStatus(const RoutingTable& table) {
    std::optional<std::pair<std::uint32_t, bool>> best; // metric, cellular
    for (const auto& route : table.routes) {
        if (!isDefault(route)) continue;
        for (const auto& hop : route.hops) {
            const auto* const link = linkOf(hop, table.links);
            if (link == nullptr) continue;
            const std::pair candidate(route.metric, isCellular(*link));
            if (!best || candidate < *best) best = candidate;
        }
    }
    if (!best) return NetworkReachabilityStatus::notReachable;
    return best->second ? NetworkReachabilityStatus::reachableViaCellular
                        : NetworkReachabilityStatus::reachableViaEthernetOrWiFi;
}

} // namespace corvantile
