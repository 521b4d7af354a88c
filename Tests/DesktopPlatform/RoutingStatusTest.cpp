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

NetworkRoute defaultRoute(Hops hops, std::uint32_t metric = 0) {
    return {.family = AF_INET,
            .type = RTN_UNICAST,
            .table = RT_TABLE_MAIN,
            .metric = metric,
            .hops = std::move(hops)};
}

} // namespace

TEST(RoutingStatus, FollowsTheDefaultRouteWithTheLowestMetricOverALinkThatIsUp) {
    const std::vector<NetworkLink> links = {{1, up | IFF_LOOPBACK, ARPHRD_LOOPBACK, "lo", "", ""},
                                            {2, up, ARPHRD_ETHER, "eth0", "", ""},
                                            {3, up, ARPHRD_NONE, "wwan0", "", ""},
                                            {4, IFF_UP, ARPHRD_ETHER, "unplugged", "", ""},
                                            {5, IFF_RUNNING, ARPHRD_ETHER, "down", "", ""},
                                            {6, up, ARPHRD_NONE, "tun0", "tun", ""},
                                            {7, up, ARPHRD_PPP, "modem", "", ""},
                                            {8, up, ARPHRD_ETHER, "usb0", "", "wwan"},
                                            {9, up, ARPHRD_ETHER, "x", "rmnet", ""}};
    const struct {
        std::string_view name;
        std::vector<NetworkRoute> routes;
        Status expected;
    } cases[] = {
        {"no route", {}, Status::notReachable},
        {"ethernet", {defaultRoute({{2}})}, Status::reachableViaEthernetOrWiFi},
        {"cellular", {defaultRoute({{3}})}, Status::reachableViaCellular},
        {"tunnel", {defaultRoute({{6}})}, Status::reachableViaEthernetOrWiFi},
        {"cellular by its hardware", {defaultRoute({{7}})}, Status::reachableViaCellular},
        {"cellular by its device", {defaultRoute({{8}})}, Status::reachableViaCellular},
        {"cellular by its kind", {defaultRoute({{9}})}, Status::reachableViaCellular},
        {"no carrier", {defaultRoute({{4}})}, Status::notReachable},
        {"taken down", {defaultRoute({{5}})}, Status::notReachable},
        {"unknown link", {defaultRoute({{99}})}, Status::notReachable},
        {"dead hop", {defaultRoute({{2, RTNH_F_DEAD}})}, Status::notReachable},
        {"second hop works", {defaultRoute({{4}, {3}})}, Status::reachableViaCellular},
        {"lower metric", {defaultRoute({{2}}, 700), defaultRoute({{3}}, 100)}, Status::reachableViaCellular},
        {"equal metrics",
         {defaultRoute({{3}}, 100), defaultRoute({{2}}, 100)},
         Status::reachableViaEthernetOrWiFi},
    };
    for (const auto& [name, routes, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(reachabilityStatus(links, routes), expected);
    }
}

} // namespace corvantile
