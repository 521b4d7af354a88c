#pragma once

#include "CorvantileDesktop/detail/Network/NetlinkMessages.hpp"
#include "CorvantileDesktop/detail/Network/RoutingStatus.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

// The conversation with the kernel over one socket, without the socket: asks for all links, then for all
// routes, and once more whenever the kernel reports a change that may matter. (Following each report instead
// would miss the routes that vanish silently with their link.) Threads: one at a time.
class CORVANTILE_API RouteTracker {
public:
    // The driver's name for a link's kind of device, by the link's name; empty when it says none.
    using DeviceTypeOf = std::function<std::string(const std::string&)>;

    struct Reaction {
        std::vector<std::byte> request; // to be sent, unless empty
        std::optional<NetworkReachabilityStatus> status;
        bool failed = false; // the kernel refused: begin again, on a new socket
    };

    // `port` is the socket's own address: another program's requests cause messages too.
    RouteTracker(std::uint32_t port, DeviceTypeOf deviceTypeOf);

    // The first request.
    [[nodiscard]] std::vector<std::byte> begin();

    // Takes one datagram of the kernel.
    [[nodiscard]] Reaction receive(NetlinkBytes datagram);

private:
    enum class Phase { idle, links, routes };

    [[nodiscard]] bool isAnswer(const NetlinkMessage& message) const;
    std::vector<std::byte> ask(std::uint16_t type);
    void take(const NetlinkMessage& answer, Reaction& reaction);
    void finish(const NetlinkMessage& end, Reaction& reaction);

    const std::uint32_t port_;
    const DeviceTypeOf deviceTypeOf_;
    Phase phase_ = Phase::idle;
    std::uint32_t sequence_ = 0;
    bool stale_ = false; // something changed while the kernel was answering
    std::vector<NetworkLink> links_;
    std::vector<NetworkRoute> routes_;
};

} // namespace corvantile
