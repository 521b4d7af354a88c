#include "CorvantileDesktop/detail/Network/NetlinkMessages.hpp"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>

namespace corvantile {

namespace {

// Its payload points into the bytes that it was read from.
struct Message {
    std::uint16_t type = 0;  // RTM_…, NLMSG_…
    std::uint16_t flags = 0; // NLM_F_…
    NetlinkBytes payload;
};

struct Attribute {
    std::uint16_t type = 0;
    NetlinkBytes value;
};

// Copied out, since nothing promises alignment.
template <class Value>
std::optional<Value> read(NetlinkBytes bytes) {
    if (bytes.size() < sizeof(Value)) return std::nullopt;
    Value value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

// What follows a structure at the beginning of `bytes`, which is there as a whole.
template <class Value>
NetlinkBytes after(NetlinkBytes bytes) {
    return bytes.subspan(std::min<std::size_t>(NLMSG_ALIGN(sizeof(Value)), bytes.size()));
}

// Takes `length` bytes and their padding, which the last piece may lack; nullopt when they are not all there.
std::optional<NetlinkBytes> take(NetlinkBytes& bytes, std::size_t length, std::size_t headerLength) {
    if (length < headerLength || length > bytes.size()) return std::nullopt;
    const auto taken = bytes.first(length);
    bytes = bytes.subspan(std::min<std::size_t>(NLMSG_ALIGN(length), bytes.size()));
    return taken;
}

std::optional<Attribute> takeAttribute(NetlinkBytes& bytes) {
    const auto header = read<rtattr>(bytes);
    if (!header) return std::nullopt;
    const auto whole = take(bytes, header->rta_len, sizeof(rtattr));
    if (!whole) return std::nullopt;
    return Attribute{static_cast<std::uint16_t>(header->rta_type & NLA_TYPE_MASK), after<rtattr>(*whole)};
}

std::string text(NetlinkBytes value) {
    const auto end = std::find(value.begin(), value.end(), std::byte{0});
    return {reinterpret_cast<const char*>(value.data()), static_cast<std::size_t>(end - value.begin())};
}

std::string kindOf(NetlinkBytes linkInfo) {
    while (const auto attribute = takeAttribute(linkInfo))
        if (attribute->type == IFLA_INFO_KIND) return text(attribute->value);
    return {};
}

std::vector<NetworkRoute::Hop> hopsOf(NetlinkBytes multipath) {
    std::vector<NetworkRoute::Hop> hops;
    while (const auto header = read<rtnexthop>(multipath)) {
        if (!take(multipath, header->rtnh_len, sizeof(rtnexthop))) break;
        hops.push_back({header->rtnh_ifindex, header->rtnh_flags});
    }
    return hops;
}

void apply(const Attribute& attribute, unsigned routeFlags, NetworkRoute& route) {
    switch (attribute.type) {
    case RTA_TABLE: route.table = read<std::uint32_t>(attribute.value).value_or(route.table); break;
    case RTA_PRIORITY: route.metric = read<std::uint32_t>(attribute.value).value_or(route.metric); break;
    case RTA_OIF:
        if (const auto link = read<int>(attribute.value)) route.hops.push_back({*link, routeFlags});
        break;
    case RTA_MULTIPATH:
        for (const auto& hop : hopsOf(attribute.value)) route.hops.push_back(hop);
        break;
    }
}

// Takes the first message off `bytes`; nullopt at the end, and where what is left is no whole message.
std::optional<Message> takeMessage(NetlinkBytes& bytes) {
    const auto header = read<nlmsghdr>(bytes);
    if (!header) return std::nullopt;
    const auto whole = take(bytes, header->nlmsg_len, sizeof(nlmsghdr));
    if (!whole) return std::nullopt;
    return Message{header->nlmsg_type, header->nlmsg_flags, after<nlmsghdr>(*whole)};
}

std::optional<NetworkLink> parseLink(const Message& message) {
    const auto header = read<ifinfomsg>(message.payload);
    if (!header) return std::nullopt;
    NetworkLink link;
    link.index = header->ifi_index;
    link.flags = header->ifi_flags;
    link.hardwareType = header->ifi_type;
    auto attributes = after<ifinfomsg>(message.payload);
    while (const auto attribute = takeAttribute(attributes)) {
        if (attribute->type == IFLA_IFNAME) link.name = text(attribute->value);
        if (attribute->type == IFLA_LINKINFO) link.kind = kindOf(attribute->value);
    }
    return link;
}

std::optional<NetworkRoute> parseRoute(const Message& message) {
    const auto header = read<rtmsg>(message.payload);
    if (!header) return std::nullopt;
    NetworkRoute route;
    route.family = header->rtm_family;
    route.prefixLength = header->rtm_dst_len;
    route.type = header->rtm_type;
    route.table = header->rtm_table;
    auto attributes = after<rtmsg>(message.payload);
    while (const auto attribute = takeAttribute(attributes)) apply(*attribute, header->rtm_flags, route);
    return route;
}

// Only default routes count, while a router may learn and forget others all day long.
bool mayChangeStatus(const Message& message) {
    switch (message.type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
    case RTM_NEWADDR:
    case RTM_DELADDR: return true;
    case RTM_NEWROUTE:
    case RTM_DELROUTE: {
        const auto header = read<rtmsg>(message.payload);
        return !header || header->rtm_dst_len == 0;
    }
    default: return false;
    }
}

DumpProgress addTo(RoutingTable& table, const Message& answer) {
    if ((answer.flags & NLM_F_DUMP_INTR) != 0) return DumpProgress::failed;
    switch (answer.type) {
    case NLMSG_ERROR: return DumpProgress::failed;
    case NLMSG_DONE:
        return read<int>(answer.payload).value_or(0) == 0 ? DumpProgress::done : DumpProgress::failed;
    case RTM_NEWLINK:
        if (auto link = parseLink(answer)) table.links.push_back(std::move(*link));
        break;
    case RTM_NEWROUTE:
        if (auto route = parseRoute(answer); route && route->prefixLength == 0)
            table.routes.push_back(std::move(*route));
        break;
    }
    return DumpProgress::more;
}

} // namespace

bool reportsChange(NetlinkBytes datagram) {
    while (const auto message = takeMessage(datagram))
        if (mayChangeStatus(*message)) return true;
    return false;
}

DumpProgress addAnswer(RoutingTable& table, NetlinkBytes datagram) {
    while (const auto message = takeMessage(datagram))
        if (const auto progress = addTo(table, *message); progress != DumpProgress::more) return progress;
    return DumpProgress::more;
}

std::vector<std::byte> makeDumpRequest(std::uint16_t type) {
    // Older kernels require the whole body of the requested kind; zero means all families.
    const auto bodyLength = type == RTM_GETLINK ? sizeof(ifinfomsg) : sizeof(rtmsg);
    nlmsghdr header{};
    header.nlmsg_len = static_cast<std::uint32_t>(NLMSG_LENGTH(bodyLength));
    header.nlmsg_type = type;
    header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    std::vector<std::byte> bytes(header.nlmsg_len);
    std::memcpy(bytes.data(), &header, sizeof header);
    return bytes;
}

} // namespace corvantile
