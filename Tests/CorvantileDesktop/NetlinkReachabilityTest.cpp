#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>

#include <sched.h>
#include <unistd.h>

namespace corvantile::NetlinkReachabilityTest {

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

TEST(NetlinkReachability, FollowsDefaultRoutesAsTheyComeAndGo) {
    if (!canMakeOwnNetwork()) GTEST_SKIP() << "No network of one's own can be made here.";
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // begins a process of its own

    EXPECT_EXIT(followRoutesInOwnNetwork(), testing::ExitedWithCode(0), "");
}

} // namespace corvantile::NetlinkReachabilityTest
