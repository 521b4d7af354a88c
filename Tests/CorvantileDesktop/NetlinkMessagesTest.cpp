#include "CorvantileDesktop/detail/Network/NetlinkMessages.hpp"

#include "Tests/CorvantileDesktop/NetlinkBuilder.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <cerrno>

#include <linux/if.h>
#include <linux/if_arp.h>

namespace corvantile::NetlinkMessagesTest {

using Status = NetworkReachabilityStatus;

constexpr unsigned up = IFF_UP | IFF_RUNNING;

NetworkRoute routeOver(std::vector<NetworkRoute::Hop> hops, std::uint32_t metric = 0,
                       unsigned prefixLength = 0, std::uint32_t table = RT_TABLE_MAIN) {
    return {AF_INET, prefixLength, RTN_UNICAST, table, metric, std::move(hops)};
}

const NetworkLink ethernet = {2, up, ARPHRD_ETHER, "eth0", "", ""};

NetlinkBuffer done(int error = 0) { return message(headerOf(NLMSG_DONE, NLM_F_MULTI), error); }

// What the kernel's answers to both requests say, each in two datagrams.
RoutingTable tableOf(const std::vector<NetworkLink>& links, const std::vector<NetworkRoute>& routes) {
    RoutingTable table;
    NetlinkBuffer answers;
    for (const auto& link : links) answers = answers + linkMessage(headerOf(RTM_NEWLINK, NLM_F_MULTI), link);
    EXPECT_EQ(addAnswer(table, answers), DumpProgress::more);
    EXPECT_EQ(addAnswer(table, done()), DumpProgress::done);
    answers.clear();
    for (const auto& route : routes)
        answers = answers + routeMessage(headerOf(RTM_NEWROUTE, NLM_F_MULTI), route);
    EXPECT_EQ(addAnswer(table, answers + done()), DumpProgress::done);
    return table;
}

TEST(ReachabilityStatus, FollowsTheDefaultRouteWithTheLowestMetricOverALinkThatIsUp) {
    const std::vector<NetworkLink> links = {{1, up | IFF_LOOPBACK, ARPHRD_LOOPBACK, "lo", "", ""},
                                            ethernet,
                                            {3, up, ARPHRD_NONE, "wwan0", "", ""},
                                            {4, IFF_UP, ARPHRD_ETHER, "unplugged", "", ""},
                                            {5, IFF_RUNNING, ARPHRD_ETHER, "down", "", ""},
                                            {6, up, ARPHRD_NONE, "tun0", "tun", ""},
                                            {7, up, ARPHRD_PPP, "modem", "", ""},
                                            {8, up, ARPHRD_ETHER, "usb0", "", ""},
                                            {9, up, ARPHRD_ETHER, "x", "rmnet", ""}};
    const struct {
        const char* name;
        std::vector<NetworkRoute> routes;
        Status expected;
    } cases[] = {
        {"no route", {}, Status::notReachable},
        {"no default route", {routeOver({{2}}, 0, 24)}, Status::notReachable},
        {"of another table", {routeOver({{2}}, 0, 0, 1000)}, Status::notReachable},
        {"loopback", {routeOver({{1}})}, Status::notReachable},
        {"ethernet", {routeOver({{2}})}, Status::reachableViaEthernetOrWiFi},
        {"tunnel", {routeOver({{6}})}, Status::reachableViaEthernetOrWiFi},
        {"cellular by its name", {routeOver({{3}})}, Status::reachableViaCellular},
        {"cellular by its hardware", {routeOver({{7}})}, Status::reachableViaCellular},
        {"cellular by its device", {routeOver({{8}})}, Status::reachableViaCellular},
        {"cellular by its kind", {routeOver({{9}})}, Status::reachableViaCellular},
        {"no carrier", {routeOver({{4}})}, Status::notReachable},
        {"taken down", {routeOver({{5}})}, Status::notReachable},
        {"unknown link", {routeOver({{99}})}, Status::notReachable},
        {"dead hop", {routeOver({{2, RTNH_F_DEAD}})}, Status::notReachable},
        {"second hop works", {routeOver({{2, RTNH_F_LINKDOWN}, {3}})}, Status::reachableViaCellular},
        {"lower metric", {routeOver({{2}}, 700), routeOver({{3}}, 100)}, Status::reachableViaCellular},
        {"equal metrics", {routeOver({{3}}), routeOver({{2}})}, Status::reachableViaEthernetOrWiFi},
    };
    for (const auto& [name, routes, expected] : cases) {
        SCOPED_TRACE(name);
        auto read = tableOf(links, routes);
        for (auto& link : read.links)
            if (link.name == "usb0") link.deviceType = "wwan"; // as its driver reports it

        EXPECT_EQ(reachabilityStatus(read), expected);
    }
}

TEST(NetlinkMessages, ReportAChangeOfLinksAddressesAndDefaultRoutesAlone) {
    const auto routeChange = [](std::uint16_t type, unsigned prefixLength) {
        return routeMessage(headerOf(type), routeOver({{2}}, 0, prefixLength));
    };
    for (const std::uint16_t type : {RTM_NEWLINK, RTM_DELLINK, RTM_NEWADDR, RTM_DELADDR})
        EXPECT_TRUE(reportsChange(linkMessage(headerOf(type), ethernet))) << type;
    for (const std::uint16_t type : {RTM_NEWROUTE, RTM_DELROUTE}) {
        EXPECT_TRUE(reportsChange(routeChange(type, 24) + routeChange(type, 0))) << type;
        EXPECT_FALSE(reportsChange(routeChange(type, 24))) << type;
    }
    EXPECT_FALSE(reportsChange(done()));
}

TEST(NetlinkMessages, FailWhenTheKernelRefusesOrTheTablesChangedWhileItAnswered) {
    for (const auto& answer : {message(headerOf(NLMSG_ERROR), -EBUSY), done(-EINTR),
                               linkMessage(headerOf(RTM_NEWLINK, NLM_F_DUMP_INTR), ethernet) + done()}) {
        RoutingTable table;
        EXPECT_EQ(addAnswer(table, answer), DumpProgress::failed);
    }
}

// Every way to cut the bytes short, each from memory of just that size, for the address sanitizer to watch.
TEST(NetlinkMessages, AreReadNoFurtherThanTheyReach) {
    const auto counts = [](const NetlinkBuffer& datagram) {
        RoutingTable table;
        static_cast<void>(reportsChange(datagram));
        EXPECT_EQ(addAnswer(table, datagram), DumpProgress::more);
        return table.links.size() + table.routes.size();
    };
    const auto link = linkMessage(headerOf(RTM_NEWLINK), {7, up, ARPHRD_RAWIP, "wwan0", "rmnet", ""});
    const auto route = routeMessage(headerOf(RTM_NEWROUTE), routeOver({{4}, {5}}));
    for (const auto& [whole, bodySize] :
         {std::pair(link, sizeof(ifinfomsg)), std::pair(route, sizeof(rtmsg))}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            NetlinkBuffer cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(counts(cut), 0U) << size;

            if (size < sizeof(nlmsghdr)) continue;
            const auto length = static_cast<std::uint32_t>(size); // a whole message, cut inside
            std::memcpy(cut.data(), &length, sizeof length);
            EXPECT_EQ(counts(cut), size >= sizeof(nlmsghdr) + bodySize ? 1U : 0U) << size;

            NetlinkBuffer emptied = cut; // lengths of nothing end it as well
            emptied.resize(whole.size());
            std::memcpy(emptied.data(), whole.data(), sizeof length);
            EXPECT_EQ(counts(emptied), 1U) << size;
        }
    }
}

} // namespace corvantile::NetlinkMessagesTest
