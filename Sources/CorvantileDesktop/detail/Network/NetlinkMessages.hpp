#pragma once

#include "CorvantileDesktop/detail/Network/RoutingStatus.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace corvantile {

// The kernel's routing messages, as datagrams. A message that is cut short ends its datagram.
using NetlinkBytes = std::span<const std::byte>;

// `failed`: the kernel refused, or the tables changed while it answered.
enum class DumpProgress { more, done, failed };

// True when a notification may change the status of the network.
[[nodiscard]] CORVANTILE_API bool reportsChange(NetlinkBytes datagram);

// A request for everything of one kind: RTM_GETLINK, RTM_GETROUTE.
[[nodiscard]] CORVANTILE_API std::vector<std::byte> makeDumpRequest(std::uint16_t type);

// Adds the links and default routes of an answer to such a request. Links get no `deviceType`, which the
// kernel reports elsewhere.
[[nodiscard]] CORVANTILE_API DumpProgress addAnswer(RoutingTable& table, NetlinkBytes datagram);

} // namespace corvantile
