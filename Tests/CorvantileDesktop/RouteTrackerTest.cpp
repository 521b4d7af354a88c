#include "CorvantileDesktop/detail/Network/RouteTracker.hpp"

#include "Tests/CorvantileDesktop/NetlinkBuilder.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <linux/if.h>
#include <linux/if_arp.h>

namespace corvantile::RouteTrackerTest {

using Status = NetworkReachabilityStatus;

constexpr std::uint32_t ownPort = 4711;
constexpr unsigned up = IFF_UP | IFF_RUNNING;

NetworkRoute routeOver(std::vector<NetworkRoute::Hop> hops, std::uint32_t metric = 0,
                       unsigned prefixLength = 0, std::uint32_t table = RT_TABLE_MAIN) {
    return {AF_INET, prefixLength, RTN_UNICAST, table, metric, std::move(hops)};
}

const NetworkLink ethernet = {2, up, ARPHRD_ETHER, "eth0", "", ""};

// The kernel's side of the conversation, and what came of it.
struct RouteTrackerTest : testing::Test {
    RouteTracker tracker{ownPort, [](const std::string& name) { return name == "usb0" ? "wwan" : ""; }};
    nlmsghdr asked{};  // by the last request
    bool asks = false; // by the last reaction

    RouteTrackerTest() { begin(); }

    void begin() { note(tracker.begin()); }
    void note(const NetlinkBuffer& request) {
        asks = !request.empty();
        if (asks) std::memcpy(&asked, request.data(), sizeof asked);
    }
    RouteTracker::Reaction hear(const NetlinkBuffer& datagram) {
        auto reaction = tracker.receive(datagram);
        note(reaction.request);
        return reaction;
    }

    nlmsghdr answer(std::uint16_t type, std::uint16_t flags = NLM_F_MULTI) const {
        return headerOf(type, flags, asked.nlmsg_seq, ownPort);
    }
    NetlinkBuffer done(int error = 0) const { return message(answer(NLMSG_DONE), error); }
    static NetlinkBuffer news(std::uint16_t type, unsigned prefixLength = 0) {
        return routeMessage(headerOf(type), routeOver({{2}}, 0, prefixLength));
    }

    // Answers what was asked, links and routes, and returns the status.
    std::optional<Status> answerAll(const std::vector<NetworkLink>& links = {ethernet},
                                    const std::vector<NetworkRoute>& routes = {routeOver({{2}})}) {
        NetlinkBuffer answers;
        for (const auto& link : links) answers = answers + linkMessage(answer(RTM_NEWLINK), link);
        hear(answers + done());
        answers.clear();
        for (const auto& route : routes) answers = answers + routeMessage(answer(RTM_NEWROUTE), route);
        return hear(answers + done()).status;
    }
};

TEST_F(RouteTrackerTest, FollowsTheDefaultRouteWithTheLowestMetricOverALinkThatIsUp) {
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
        begin();
        EXPECT_EQ(answerAll(links, routes), expected);
    }
}

TEST_F(RouteTrackerTest, AsksAgainWhenSomethingChangedAndForgetsWhatItKnew) {
    answerAll();

    for (const std::uint16_t type :
         {RTM_NEWLINK, RTM_DELLINK, RTM_NEWADDR, RTM_DELADDR, RTM_NEWROUTE, RTM_DELROUTE}) {
        SCOPED_TRACE(type);
        hear(news(type));
        EXPECT_EQ(asked.nlmsg_type, RTM_GETLINK);
        EXPECT_EQ(answerAll({ethernet}, {}), Status::notReachable);
    }
}

TEST_F(RouteTrackerTest, DecidesOnlyOnAnAnswerThatNothingChangedMeanwhile) {
    for (const bool isInterrupted : {false, true}) {
        SCOPED_TRACE(isInterrupted);
        hear(isInterrupted ? linkMessage(answer(RTM_NEWLINK, NLM_F_DUMP_INTR), ethernet) : news(RTM_DELLINK));
        EXPECT_EQ(answerAll(), std::nullopt);
        EXPECT_EQ(asked.nlmsg_type, RTM_GETLINK);
    }
    EXPECT_EQ(answerAll(), Status::reachableViaEthernetOrWiFi);
    EXPECT_FALSE(asks);
}

TEST_F(RouteTrackerTest, DoesNotMindRoutesThatAreNoDefaultNorTheAnswersToAnotherProgram) {
    auto header = answer(NLMSG_DONE);
    header.nlmsg_pid = ownPort + 1;
    hear(message(header, 0));
    EXPECT_FALSE(asks);

    begin();
    answerAll();
    hear(news(RTM_NEWROUTE, 24));
    EXPECT_FALSE(asks);
}

TEST_F(RouteTrackerTest, FailsWhenTheKernelRefuses) {
    EXPECT_TRUE(hear(message(answer(NLMSG_ERROR), -EBUSY)).failed);

    begin();
    EXPECT_TRUE(hear(done(-EINTR)).failed);
}

// Every way to cut the bytes short, each from memory of just that size, for the address sanitizer to watch.
TEST(NetlinkMessages, AreReadNoFurtherThanTheyReach) {
    for (const auto& whole : {linkMessage(headerOf(RTM_NEWLINK), {7, up, ARPHRD_RAWIP, "wwan0", "rmnet", ""}),
                              routeMessage(headerOf(RTM_NEWROUTE), routeOver({{4}, {5}}))}) {
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

} // namespace corvantile::RouteTrackerTest
