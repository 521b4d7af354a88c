#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"

#include "TestPlatform/ScriptedReachability.hpp"
#include "Tests/Corvantile/ProcessTest.hpp"

namespace corvantile {
namespace {

using Status = NetworkReachabilityStatus;
using testing::ElementsAre;

class Reachability : public ProcessTest {
protected:
    static Status status() { return NetworkReachability::shared()->networkStatus(); }
    void change(Status status) {
        platform_->reachability().set(status);
        platform_->runUntilIdle();
    }
};

TEST_F(Reachability, IsUnknownUntilTheFirstUpdateAfterListeningBegan) {
    EXPECT_EQ(status(), Status::unknown);
    change(Status::reachableViaCellular);
    EXPECT_EQ(status(), Status::unknown);

    NetworkReachability::shared()->startListening();
    EXPECT_EQ(status(), Status::unknown);
    platform_->runUntilIdle();
    EXPECT_EQ(status(), Status::reachableViaCellular);
}

TEST_F(Reachability, KeepsWhatIsKnown) {
    NetworkReachability::shared()->startListening();
    const std::pair<Status, Status> steps[] = {
        {Status::reachableViaEthernetOrWiFi, Status::reachableViaEthernetOrWiFi},
        {Status::unknown, Status::reachableViaEthernetOrWiFi},
        {Status::notReachable, Status::notReachable},
        {static_cast<Status>(99), Status::notReachable},
        {Status::reachableViaCellular, Status::reachableViaCellular},
        {Status::unknown, Status::reachableViaCellular},
    };
    for (const auto& [reported, kept] : steps) {
        change(reported);
        EXPECT_EQ(status(), kept);
    }
}

TEST_F(Reachability, IsOneForEachProcessAndEndsWithIt) {
    NetworkReachability::shared()->startListening();
    const std::weak_ptr<NetworkReachability> first = NetworkReachability::shared();
    EXPECT_THAT(platform_->reachability().hosts(),
                ElementsAre(std::string(NetworkReachability::watchedHost)));

    platform_ = TestPlatform::relaunch(std::move(platform_)); // with an update still waiting

    EXPECT_TRUE(first.expired());
    EXPECT_EQ(status(), Status::unknown);
}

using ReachabilityDeathTest = Reachability;

TEST_F(ReachabilityDeathTest, ARefusedHostEndsTheProcess) {
    platform_->reachability().refuse(std::string(NetworkReachability::watchedHost));
    EXPECT_DEATH(static_cast<void>(NetworkReachability::shared()),
                 "Corvantile/NetworkReachability:[0-9]+: Fatal error: .*www.example.com");
}

} // namespace
} // namespace corvantile
