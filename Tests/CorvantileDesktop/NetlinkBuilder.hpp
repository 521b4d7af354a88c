#pragma once

#include "CorvantileDesktop/detail/Network/RoutingStatus.hpp"

#include <cstddef>
#include <cstring>

#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace corvantile {

using NetlinkBuffer = std::vector<std::byte>;

inline void append(NetlinkBuffer& buffer, const void* bytes, std::size_t size) {
    const auto* const first = static_cast<const std::byte*>(bytes);
    buffer.insert(buffer.end(), first, first + size);
    buffer.resize(NLMSG_ALIGN(buffer.size()));
}

inline NetlinkBuffer attribute(unsigned type, const void* value, std::size_t size) {
    const rtattr header{static_cast<std::uint16_t>(RTA_LENGTH(size)), static_cast<std::uint16_t>(type)};
    NetlinkBuffer buffer;
    append(buffer, &header, sizeof header);
    append(buffer, value, size);
    return buffer;
}

inline NetlinkBuffer number(unsigned type, std::uint32_t value) {
    return attribute(type, &value, sizeof value);
}
inline NetlinkBuffer text(unsigned type, const std::string& value) {
    return attribute(type, value.c_str(), value.size() + 1);
}
inline NetlinkBuffer nested(unsigned type, const NetlinkBuffer& inside) {
    return attribute(type, inside.data(), inside.size());
}

inline nlmsghdr headerOf(std::uint16_t type, std::uint16_t flags = 0, std::uint32_t sequence = 0,
                         std::uint32_t port = 0) {
    return {0, type, flags, sequence, port};
}

// A whole message as the kernel sends it.
template <class Body>
NetlinkBuffer message(nlmsghdr header, const Body& body, const std::vector<NetlinkBuffer>& attributes = {}) {
    NetlinkBuffer buffer;
    append(buffer, &header, sizeof header);
    append(buffer, &body, sizeof body);
    for (const auto& each : attributes) append(buffer, each.data(), each.size());
    header.nlmsg_len = static_cast<std::uint32_t>(buffer.size());
    std::memcpy(buffer.data(), &header, sizeof header);
    return buffer;
}

inline NetlinkBuffer operator+(NetlinkBuffer left, const NetlinkBuffer& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline NetlinkBuffer linkMessage(nlmsghdr header, const NetworkLink& link) {
    const auto hardwareType = static_cast<unsigned short>(link.hardwareType);
    return message(header, ifinfomsg{AF_UNSPEC, 0, hardwareType, link.index, link.flags, 0},
                   {number(IFLA_MTU, 1500), text(IFLA_IFNAME, link.name),
                    nested(IFLA_LINKINFO | NLA_F_NESTED, text(IFLA_INFO_KIND, link.kind))});
}

inline NetlinkBuffer routeMessage(nlmsghdr header, const NetworkRoute& route) {
    rtmsg body{};
    body.rtm_family = static_cast<unsigned char>(route.family);
    body.rtm_dst_len = static_cast<unsigned char>(route.prefixLength);
    body.rtm_type = static_cast<unsigned char>(route.type);
    NetlinkBuffer hops;
    for (const auto& [link, flags] : route.hops) {
        const auto gateway = number(RTA_GATEWAY, 1);
        const rtnexthop hop{static_cast<unsigned short>(sizeof hop + gateway.size()),
                            static_cast<unsigned char>(flags), 0, link};
        append(hops, &hop, sizeof hop);
        append(hops, gateway.data(), gateway.size());
    }
    hops = nested(RTA_MULTIPATH, hops);
    if (route.hops.size() == 1) { // told without a list
        body.rtm_flags = route.hops[0].flags;
        hops = number(RTA_OIF, static_cast<std::uint32_t>(route.hops[0].link));
    }
    return message(header, body, {number(RTA_TABLE, route.table), hops, number(RTA_PRIORITY, route.metric)});
}

} // namespace corvantile
