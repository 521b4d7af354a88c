#include "DesktopPlatform/Network/NetlinkMessages.hpp"

#include "Tests/DesktopPlatform/NetlinkBuilder.hpp"

#include <gtest/gtest.h>

#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <linux/if_arp.h>
#include <linux/if_link.h>

namespace corvantile {

namespace {

NetlinkBuffer modem() {
    ifinfomsg body{};
    body.ifi_type = ARPHRD_RAWIP;
    body.ifi_index = 7;
    body.ifi_flags = 0x41;
    return message(headerOf(RTM_NEWLINK), body,
                   {number(IFLA_MTU, 1500), text(IFLA_IFNAME, std::string_view("wwan0\0", 6)),
                    nested(IFLA_LINKINFO | NLA_F_NESTED, text(IFLA_INFO_KIND, "rmnet"))});
}

NetlinkBuffer routeOver(const NetlinkBuffer& hops) {
    rtmsg body{};
    body.rtm_type = RTN_UNICAST;
    body.rtm_flags = RTNH_F_LINKDOWN;
    return message(headerOf(RTM_NEWROUTE), body, {number(RTA_TABLE, 1000), hops, number(RTA_PRIORITY, 600)});
}

NetlinkBuffer hop(int link, unsigned char flags, const NetlinkBuffer& attributes = {}) {
    rtnexthop header{};
    header.rtnh_len = static_cast<std::uint16_t>(sizeof header + attributes.size());
    header.rtnh_flags = flags;
    header.rtnh_ifindex = link;
    NetlinkBuffer buffer;
    append(buffer, &header, sizeof header);
    return buffer + attributes;
}

NetlinkMessage firstOf(const NetlinkBuffer& buffer) {
    NetlinkBytes bytes(buffer);
    return takeNetlinkMessage(bytes).value();
}

} // namespace

TEST(NetlinkMessages, TellALinksNameAndKind) {
    const auto buffer = modem();
    const auto link = parseLink(firstOf(buffer)).value();

    EXPECT_EQ(std::tuple(link.index, link.flags, link.hardwareType, link.name, link.kind),
              std::tuple(7, 0x41U, static_cast<unsigned>(ARPHRD_RAWIP), "wwan0", "rmnet"));
}

TEST(NetlinkMessages, TellARoutesTableMetricAndHops) {
    const std::pair<NetlinkBuffer, std::vector<std::pair<int, unsigned>>> cases[] = {
        {number(RTA_OIF, 3), {{3, RTNH_F_LINKDOWN}}},
        {nested(RTA_MULTIPATH, hop(4, RTNH_F_DEAD) + hop(5, 0, number(RTA_GATEWAY, 1))),
         {{4, RTNH_F_DEAD}, {5, 0}}}};
    for (const auto& [attribute, expected] : cases) {
        const auto buffer = routeOver(attribute);
        const auto route = parseRoute(firstOf(buffer)).value();

        EXPECT_EQ(std::pair(route.table, route.metric), std::pair(1000U, 600U));
        std::vector<std::pair<int, unsigned>> hops;
        for (const auto& each : route.hops) hops.emplace_back(each.link, each.flags);
        EXPECT_EQ(hops, expected);
    }
}

// Every way to cut the bytes short, each from memory of just that size, for the address sanitizer to watch.
TEST(NetlinkMessages, AreReadNoFurtherThanTheyReach) {
    for (const auto& whole : {modem(), routeOver(nested(RTA_MULTIPATH, hop(4, 0)))}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const NetlinkBuffer cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            NetlinkBytes bytes(cut);
            EXPECT_EQ(takeNetlinkMessage(bytes), std::nullopt) << size;

            if (size < sizeof(nlmsghdr)) continue;
            const NetlinkBuffer payload(cut.begin() + sizeof(nlmsghdr), cut.end());
            const NetlinkMessage shortened{.payload = payload};
            static_cast<void>(netlinkError(shortened));
            EXPECT_EQ(parseLink(shortened).has_value(), payload.size() >= sizeof(ifinfomsg)) << size;
            EXPECT_EQ(parseRoute(shortened).has_value(), payload.size() >= sizeof(rtmsg)) << size;

            NetlinkBuffer emptied = payload; // lengths of nothing end it as well
            emptied.resize(whole.size());
            static_cast<void>(parseLink({.payload = emptied}));
            static_cast<void>(parseRoute({.payload = emptied}));
        }
    }
}

} // namespace corvantile
