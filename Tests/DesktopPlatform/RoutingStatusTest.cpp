#include "DesktopPlatform/Network/RoutingStatus.hpp"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace corvantile {

namespace {

using Status = NetworkReachabilityStatus;
using Hops = std::vector<NetworkRoute::Hop>;

constexpr unsigned up = IFF_UP | IFF_RUNNING;

NetworkRoute defaultRoute(Hops hops, std::uint32_t metric = 0, unsigned family = AF_INET) {
    return {.family = family,
            .type = RTN_UNICAST,
            .table = RT_TABLE_MAIN,
            .metric = metric,
            .hops = std::move(hops)};
}

NetworkRoute with(unsigned NetworkRoute::*field, unsigned value) {
    auto route = defaultRoute({{2}});
    route.*field = value;
    return route;
}

} // namespace

TEST(RoutingStatus, FollowsTheDefaultRouteWithTheLowestMetricOverALinkThatIsUp) {
    const std::vector<NetworkLink> links = {{1, up | IFF_LOOPBACK, ARPHRD_LOOPBACK, "lo", "", ""},
                                            {2, up, ARPHRD_ETHER, "eth0", "", ""},
                                            {3, up, ARPHRD_NONE, "wwan0", "", ""},
                                            {4, IFF_UP, ARPHRD_ETHER, "unplugged", "", ""},
                                            {5, IFF_RUNNING, ARPHRD_ETHER, "down", "", ""}};
    const struct {
        std::string_view name;
        std::vector<NetworkRoute> routes;
        Status expected;
    } cases[] = {
        {"no route", {}, Status::notReachable},
        {"ethernet", {defaultRoute({{2}})}, Status::reachableViaEthernetOrWiFi},
        {"cellular", {defaultRoute({{3}})}, Status::reachableViaCellular},
        {"no carrier", {defaultRoute({{4}})}, Status::notReachable},
        {"unknown link", {defaultRoute({{9}})}, Status::notReachable},
        {"dead hop", {defaultRoute({{2, RTNH_F_DEAD}})}, Status::notReachable},
        {"second hop works", {defaultRoute({{4}, {3}})}, Status::reachableViaCellular},
        {"lower metric", {defaultRoute({{2}}, 700), defaultRoute({{3}}, 100)}, Status::reachableViaCellular},
        {"equal metrics",
         {defaultRoute({{3}}, 100), defaultRoute({{2}}, 100)},
         Status::reachableViaEthernetOrWiFi},
        {"local net", {with(&NetworkRoute::prefixLength, 24)}, Status::notReachable},
        {"unreachable", {with(&NetworkRoute::type, RTN_UNREACHABLE)}, Status::notReachable},
        {"other family", {defaultRoute({{2}}, 0, AF_MPLS)}, Status::notReachable},
    };
    for (const auto& [name, routes, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(reachabilityStatus(links, routes), expected);
    }
}

TEST(RoutingStatus, KnowsACellularLinkByItsNameItsKindOrItsHardware) {
    const struct {
        NetworkLink link;
        bool cellular;
    } cases[] = {{{1, up, ARPHRD_ETHER, "eth0", "", ""}, false},
                 {{1, up, ARPHRD_NONE, "tun0", "tun", ""}, false},
                 {{1, up, ARPHRD_ETHER, "wwp0s20f0u3", "", ""}, true},
                 {{1, up, ARPHRD_PPP, "modem", "", ""}, true},
                 {{1, up, ARPHRD_ETHER, "usb0", "", "wwan"}, true},
                 {{1, up, ARPHRD_ETHER, "x", "rmnet", ""}, true}};
    for (const auto& [link, cellular] : cases) {
        SCOPED_TRACE(link.name);
        const auto expected = cellular ? Status::reachableViaCellular : Status::reachableViaEthernetOrWiFi;
        EXPECT_EQ(reachabilityStatus({link}, {defaultRoute({{1}})}), expected);
    }
}

} // namespace corvantile
