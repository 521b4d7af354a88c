#pragma once

#include "CorvantileDesktop/detail/Network/RoutingStatus.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace corvantile {

using NetlinkBytes = std::span<const std::byte>;

// One message of the kernel. The payload points into the bytes that it was read from.
struct NetlinkMessage {
    std::uint16_t type = 0;  // RTM_…, NLMSG_…
    std::uint16_t flags = 0; // NLM_F_…
    std::uint32_t sequence = 0;
    std::uint32_t port = 0;
    NetlinkBytes payload;
};

// Takes the first message off `bytes`; nullopt at the end, and where what is left is no whole message.
[[nodiscard]] CORVANTILE_API std::optional<NetlinkMessage> takeNetlinkMessage(NetlinkBytes& bytes);

// What a message about a link or a route says; nullopt when it is too short to say it. `deviceType` stays
// empty: the kernel tells it elsewhere.
[[nodiscard]] CORVANTILE_API std::optional<NetworkLink> parseLink(const NetlinkMessage& message);
[[nodiscard]] CORVANTILE_API std::optional<NetworkRoute> parseRoute(const NetlinkMessage& message);

// The error number of an NLMSG_ERROR or NLMSG_DONE; 0 for a good end.
[[nodiscard]] CORVANTILE_API int netlinkError(const NetlinkMessage& message);

// A request for everything of one kind: RTM_GETLINK, RTM_GETROUTE.
[[nodiscard]] CORVANTILE_API std::vector<std::byte> makeDumpRequest(std::uint16_t type,
                                                                    std::uint32_t sequence);

} // namespace corvantile
