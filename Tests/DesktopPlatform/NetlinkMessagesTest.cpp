#include "DesktopPlatform/Network/NetlinkMessages.hpp"

#include "Tests/DesktopPlatform/NetlinkBuilder.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string_view>

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

    EXPECT_EQ(link.index, 7);
    EXPECT_EQ(link.flags, 0x41U);
    EXPECT_EQ(link.hardwareType, static_cast<unsigned>(ARPHRD_RAWIP));
    EXPECT_EQ(link.name, "wwan0");
    EXPECT_EQ(link.kind, "rmnet");
}

TEST(NetlinkMessages, TellARoutesTableMetricAndHops) {
    const auto single = routeOver(number(RTA_OIF, 3));
    const auto gateway = number(RTA_GATEWAY, 1);
    const auto hops = hop(4, RTNH_F_DEAD) + hop(5, 0, gateway);
    const auto multiple = routeOver(nested(RTA_MULTIPATH, hops));

    const auto route = parseRoute(firstOf(single)).value();
    const auto multipath = parseRoute(firstOf(multiple)).value();

    EXPECT_EQ(route.table, 1000U);
    EXPECT_EQ(route.metric, 600U);
    ASSERT_EQ(route.hops.size(), 1U);
    EXPECT_EQ(route.hops[0].link, 3);
    EXPECT_EQ(route.hops[0].flags, static_cast<unsigned>(RTNH_F_LINKDOWN));
    ASSERT_EQ(multipath.hops.size(), 2U);
    EXPECT_EQ(multipath.hops[0].flags, static_cast<unsigned>(RTNH_F_DEAD));
    EXPECT_EQ(multipath.hops[1].link, 5);
    EXPECT_EQ(multipath.metric, 600U);
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
        }
    }
}

TEST(NetlinkMessages, EndAtALengthThatCannotBe) {
    for (const std::uint32_t length : {0U, 15U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(length);
        auto buffer = modem();
        std::memcpy(buffer.data(), &length, sizeof length);
        NetlinkBytes bytes(buffer);

        EXPECT_EQ(takeNetlinkMessage(bytes), std::nullopt);
    }
    for (const std::uint16_t length : std::initializer_list<std::uint16_t>{0, 3, 0xFFFF}) {
        SCOPED_TRACE(length);
        auto buffer = modem();
        std::memcpy(buffer.data() + sizeof(nlmsghdr) + sizeof(ifinfomsg), &length, sizeof length);

        EXPECT_EQ(parseLink(firstOf(buffer)).value().name, "");
    }
}

} // namespace corvantile
