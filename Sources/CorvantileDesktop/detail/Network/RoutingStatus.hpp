#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace corvantile {

// A network interface, in the kernel's terms.
struct NetworkLink {
    int index = 0;
    unsigned flags = 0;        // IFF_…
    unsigned hardwareType = 0; // ARPHRD_…
    std::string name;          // "eth0"
    std::string kind;          // of a link made in software ("rmnet"); empty for hardware
    std::string deviceType;    // the driver's name for it ("wwan"); empty for most
};

// A route of the main or another table, in the kernel's terms.
struct NetworkRoute {
    struct Hop {
        int link = 0;
        unsigned flags = 0; // RTNH_F_…
    };

    unsigned family = 0;       // AF_INET, AF_INET6
    unsigned prefixLength = 0; // 0: a default route
    unsigned type = 0;         // RTN_…
    std::uint32_t table = 0;   // RT_TABLE_…
    std::uint32_t metric = 0;
    std::vector<Hop> hops;
};

struct RoutingTable {
    std::vector<NetworkLink> links;
    std::vector<NetworkRoute> routes;
};

// Reachable if a default route of the main table leads over a link that is up. The route with the lowest
// metric decides which kind of network it is; of equal ones, one that is not cellular.
[[nodiscard]] CORVANTILE_API NetworkReachabilityStatus reachabilityStatus(const RoutingTable& table);

} // namespace corvantile
