#include "DesktopPlatform/Network/RouteTracker.hpp"

#include "Tests/DesktopPlatform/NetlinkBuilder.hpp"

#include <gtest/gtest.h>

#include <string>

#include <linux/if.h>
#include <linux/if_link.h>
#include <sys/socket.h>

namespace corvantile {

namespace {

using Status = NetworkReachabilityStatus;

constexpr std::uint32_t ownPort = 4711;

// The kernel's side of the conversation, and what came of it.
struct RouteTrackerTest : testing::Test {
    RouteTracker tracker{ownPort, [this](const std::string&) { return deviceType; }};
    std::string deviceType;
    NetlinkBuffer request = tracker.begin();

    nlmsghdr answer(std::uint16_t type, std::uint16_t flags = NLM_F_MULTI) const {
        nlmsghdr asked{};
        std::memcpy(&asked, request.data(), sizeof asked);
        return headerOf(type, flags, asked.nlmsg_seq, ownPort);
    }
    std::uint16_t asked() const {
        nlmsghdr header{};
        if (!request.empty()) std::memcpy(&header, request.data(), sizeof header);
        return header.nlmsg_type;
    }
    NetlinkBuffer link(std::uint16_t flags = NLM_F_MULTI) const {
        return message(answer(RTM_NEWLINK, flags), ifinfomsg{AF_UNSPEC, 0, 0, 2, IFF_UP | IFF_RUNNING, 0});
    }
    NetlinkBuffer route(unsigned char prefixLength = 0) const {
        return message(answer(RTM_NEWROUTE), routeTo(prefixLength), {number(RTA_OIF, 2)});
    }
    NetlinkBuffer done(int error = 0) const { return message(answer(NLMSG_DONE), error); }

    static rtmsg routeTo(unsigned char prefixLength) {
        return {AF_INET, prefixLength, 0, 0, RT_TABLE_MAIN, 0, 0, RTN_UNICAST, 0};
    }
    static NetlinkBuffer news(std::uint16_t type) { return message(headerOf(type), rtmsg{}); }

    RouteTracker::Reaction hear(const NetlinkBuffer& datagram) {
        auto reaction = tracker.receive(datagram);
        request = reaction.request;
        return reaction;
    }
    // Answers what was asked, links and routes, and returns the status.
    std::optional<Status> answerAll() {
        hear(link() + done());
        return hear(route() + done()).status;
    }
};

} // namespace

TEST_F(RouteTrackerTest, AsksAgainWhenSomethingChangedAndForgetsWhatItKnew) {
    answerAll();

    for (const std::uint16_t type :
         {RTM_NEWLINK, RTM_DELLINK, RTM_NEWADDR, RTM_DELADDR, RTM_NEWROUTE, RTM_DELROUTE}) {
        SCOPED_TRACE(type);
        hear(news(type));
        EXPECT_EQ(asked(), RTM_GETLINK);
        hear(link() + done());
        EXPECT_EQ(hear(route(24) + done()).status, Status::notReachable);
    }
}

TEST_F(RouteTrackerTest, DecidesOnlyOnAnAnswerThatNothingChangedMeanwhile) {
    for (const bool isInterrupted : {false, true}) {
        SCOPED_TRACE(isInterrupted);
        hear(isInterrupted ? link(NLM_F_MULTI | NLM_F_DUMP_INTR) : news(RTM_DELLINK));
        EXPECT_EQ(answerAll(), std::nullopt);
        EXPECT_EQ(asked(), RTM_GETLINK);
    }
    deviceType = "wwan"; // as the driver calls it
    EXPECT_EQ(answerAll(), Status::reachableViaCellular);
    EXPECT_TRUE(request.empty());
}

TEST_F(RouteTrackerTest, DoesNotMindRoutesThatAreNoDefaultNorTheAnswersToAnotherProgram) {
    auto header = answer(NLMSG_DONE);
    header.nlmsg_pid = ownPort + 1;
    hear(message(header, 0));
    EXPECT_TRUE(request.empty());

    request = tracker.begin();
    answerAll();
    hear(message(headerOf(RTM_NEWROUTE), routeTo(24)));
    EXPECT_TRUE(request.empty());
}

TEST_F(RouteTrackerTest, FailsWhenTheKernelRefuses) {
    EXPECT_TRUE(hear(message(answer(NLMSG_ERROR), -EBUSY)).failed);

    request = tracker.begin();
    EXPECT_TRUE(hear(done(-EINTR)).failed);
}

} // namespace corvantile
