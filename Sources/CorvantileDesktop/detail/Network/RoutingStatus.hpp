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
    std::string deviceType;    // what its driver calls it ("wwan"); empty for most
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

// What the machine can reach: something, if a default route of the main table leads over a link that is up;
// which kind of network, is told by the route with the lowest metric. Of equal ones one that is not cellular
// decides.
[[nodiscard]] CORVANTILE_API NetworkReachabilityStatus
reachabilityStatus(const std::vector<NetworkLink>& links, const std::vector<NetworkRoute>& routes);

} // namespace corvantile
