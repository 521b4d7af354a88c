#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>

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
inline NetlinkBuffer text(unsigned type, std::string_view value) {
    return attribute(type, value.data(), value.size());
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

} // namespace corvantile
