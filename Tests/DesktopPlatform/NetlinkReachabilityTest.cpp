#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Network/NetworkReachabilityManager.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <latch>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <sched.h>
#include <unistd.h>

namespace corvantile {

namespace {

using namespace std::chrono_literals;
using Status = NetworkReachabilityStatus;

const std::string twoLinks =
    "ip link add wwan0 type veth peer name far0 && ip link add lan0 type veth peer name far1 && "
    "ip link set far0 up && ip link set far1 up && ip link set wwan0 up && "
    "ip link set lan0 up && ip addr add 192.0.2.1/24 dev wwan0 && "
    "ip addr add 198.51.100.1/24 dev lan0";

bool succeeds(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()) == 0; }

bool canMakeOwnNetwork() { return succeeds("unshare --user --map-root-user --net sh -c '" + twoLinks + "'"); }

// In a process with one thread only.
bool enterOwnNetwork() {
    const auto user = std::to_string(getuid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return false;
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    return succeeds(twoLinks);
}

// Ends the process: 0 if every step was seen, and nothing else.
[[noreturn]] void followRoutesInOwnNetwork() {
    static constexpr struct {
        const char* change;
        Status expected;
    } steps[] = {
        {"true", Status::notReachable},
        {"ip route add default via 192.0.2.9 dev wwan0 metric 50", Status::reachableViaCellular},
        {"ip route add default via 198.51.100.9 dev lan0 metric 20", Status::reachableViaEthernetOrWiFi},
        {"ip link set lan0 down", Status::reachableViaCellular}, // takes its route along, silently
        {"ip route del default", Status::notReachable}};
    if (!enterOwnNetwork()) std::_Exit(1);
    DesktopPlatform platform;
    std::vector<Status> seen;
    const auto manager = platform.ports().reachability->make("example.com");
    manager->startListening(DispatchQueue::main(), [&seen](Status status) { seen.push_back(status); });
    for (const auto& step : steps) {
        const auto sawIt = [&] { return !seen.empty() && seen.back() == step.expected; };
        if (succeeds(step.change) && platform.runMainLoopUntil(sawIt, 10s)) continue;
        std::cerr << "not seen: " << step.change << '\n';
        std::_Exit(2);
    }
    std::_Exit(seen.size() == std::size(steps) ? 0 : 3);
}

// Messages of the kernel that the watcher's socket had no room for.
long droppedMessages() {
    std::ifstream sockets("/proc/net/netlink");
    std::string line;
    long sum = 0;
    while (std::getline(sockets, line)) {
        std::istringstream columns(line);
        std::string skipped;
        long dropped = 0;
        for (int column = 0; column < 8; ++column) columns >> skipped;
        if (columns >> dropped) sum += dropped;
    }
    return sum;
}

// The same, for a watcher that gets no turn while the kernel has more to say than its socket holds.
[[noreturn]] void overrunTheWatcher() {
    if (!enterOwnNetwork()) std::_Exit(1);
    DesktopPlatform platform;
    std::vector<Status> seen;
    const auto manager = platform.ports().reachability->make("example.com");
    manager->startListening(DispatchQueue::main(), [&seen](Status status) { seen.push_back(status); });
    if (!platform.runMainLoopUntil([&] { return !seen.empty(); }, 10s)) std::_Exit(2);

    std::latch open(1);
    for (int worker = 0; worker < 4; ++worker)
        platform.ports().queues->makeSerial("held", QualityOfService::standard)->async([&open] {
            open.wait();
        });
    for (int round = 0; round < 20 && droppedMessages() == 0; ++round)
        for (const std::string verb : {"add", "del"})
            succeeds("seq 1 250 | sed 's|.*|addr " + verb + " 10.0.0.&/32 dev lan0|' | ip -batch -");
    if (!succeeds("ip route add default via 192.0.2.9 dev wwan0")) std::_Exit(3);
    if (droppedMessages() == 0) std::cerr << "nothing was dropped\n";
    open.count_down();
    const auto sawIt = [&] { return seen.back() == Status::reachableViaCellular; };
    std::_Exit(platform.runMainLoopUntil(sawIt, 10s) ? 0 : 4);
}

} // namespace

TEST(NetlinkReachability, FindsTheStatusAgainAfterTheKernelHadToDropMessages) {
    if (!canMakeOwnNetwork()) GTEST_SKIP() << "No network of one's own can be made here.";
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_EXIT(overrunTheWatcher(), testing::ExitedWithCode(0), "");
}

TEST(NetlinkReachability, FollowsDefaultRoutesAsTheyComeAndGo) {
    if (!canMakeOwnNetwork()) GTEST_SKIP() << "No network of one's own can be made here.";
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // begins a process of its own

    EXPECT_EXIT(followRoutesInOwnNetwork(), testing::ExitedWithCode(0), "");
}

TEST(NetlinkReachability, TellsThePresentStatusOnceToEveryNewListener) {
    DesktopPlatform platform;
    const auto manager = platform.ports().reachability->make("example.com");
    std::vector<Status> first, second;

    ASSERT_TRUE(
        manager->startListening(DispatchQueue::main(), [&](Status status) { first.push_back(status); }));
    EXPECT_TRUE(platform.runMainLoopUntil([&] { return !first.empty(); }, 10s));
    ASSERT_TRUE(
        manager->startListening(DispatchQueue::main(), [&](Status status) { second.push_back(status); }));
    EXPECT_TRUE(platform.runMainLoopUntil([&] { return !second.empty(); }, 10s));

    EXPECT_EQ(first, second);
    EXPECT_EQ(first.size(), 1U);
}

TEST(NetlinkReachability, RefusesToWatchOnceThePlatformHasEnded) {
    auto platform = std::make_unique<DesktopPlatform>();
    const auto manager = platform->ports().reachability->make("example.com");
    const auto main = DispatchQueue::main();
    ASSERT_TRUE(manager->startListening(main, [](Status) { FAIL() << "The loop never ran."; }));

    platform.reset();

    EXPECT_FALSE(manager->startListening(main, [](Status) {}));
}

} // namespace corvantile
