#include "CorvantileDesktop/detail/Network/RouteTracker.hpp"

#include <utility>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>

namespace corvantile {

namespace {

// Only default routes count, while a router may learn and forget others all day long.
bool mayChangeStatus(const NetlinkMessage& message) {
    switch (message.type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
    case RTM_NEWADDR:
    case RTM_DELADDR: return true;
    case RTM_NEWROUTE:
    case RTM_DELROUTE: {
        const auto route = parseRoute(message);
        return !route || route->prefixLength == 0;
    }
    default: return false;
    }
}

} // namespace

RouteTracker::RouteTracker(std::uint32_t port, DeviceTypeOf deviceTypeOf)
    : port_(port), deviceTypeOf_(std::move(deviceTypeOf)) {}

std::vector<std::byte> RouteTracker::begin() {
    links_.clear();
    routes_.clear();
    stale_ = false;
    phase_ = Phase::links;
    return ask(RTM_GETLINK);
}

RouteTracker::Reaction RouteTracker::receive(NetlinkBytes datagram) {
    Reaction reaction;
    while (const auto message = takeNetlinkMessage(datagram)) {
        if (isAnswer(*message))
            take(*message, reaction);
        else if (!mayChangeStatus(*message))
            continue;
        else if (phase_ == Phase::idle)
            reaction.request = begin();
        else
            stale_ = true;
    }
    return reaction;
}

bool RouteTracker::isAnswer(const NetlinkMessage& message) const {
    return phase_ != Phase::idle && message.port == port_ && message.sequence == sequence_;
}

std::vector<std::byte> RouteTracker::ask(std::uint16_t type) { return makeDumpRequest(type, ++sequence_); }

void RouteTracker::take(const NetlinkMessage& answer, Reaction& reaction) {
    if ((answer.flags & NLM_F_DUMP_INTR) != 0) stale_ = true;
    switch (answer.type) {
    case NLMSG_ERROR: reaction.failed = true; break;
    case NLMSG_DONE: finish(answer, reaction); break;
    case RTM_NEWLINK:
        if (auto link = parseLink(answer)) links_.push_back(std::move(*link));
        break;
    case RTM_NEWROUTE:
        if (auto route = parseRoute(answer); route && route->prefixLength == 0)
            routes_.push_back(std::move(*route));
        break;
    }
}

void RouteTracker::finish(const NetlinkMessage& end, Reaction& reaction) {
    if (netlinkError(end) != 0) {
        reaction.failed = true;
    } else if (phase_ == Phase::links) {
        phase_ = Phase::routes;
        reaction.request = ask(RTM_GETROUTE);
    } else if (stale_) {
        reaction.request = begin();
    } else {
        phase_ = Phase::idle;
        for (auto& link : links_) link.deviceType = deviceTypeOf_(link.name);
        reaction.status = reachabilityStatus(links_, routes_);
    }
}

} // namespace corvantile
