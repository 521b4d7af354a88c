#include "TestPlatform/ScriptedReachability.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace corvantile {
namespace {

using Status = NetworkReachabilityStatus;
using Statuses = std::vector<Status>;

class ScriptedReachabilityTest : public testing::Test {
protected:
    Statuses heard_;
    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_ = TestPlatform::launch(device_);
    ScriptedReachability& network_ = platform_->reachability();
    std::shared_ptr<NetworkReachabilityManager> manager_ = network_.make("www.example.com");

    void listen() {
        manager_->startListening(DispatchQueue::main(), [this](Status status) { heard_.push_back(status); });
    }
};

TEST_F(ScriptedReachabilityTest, TellsEveryChangeOnceInOrder) {
    listen();

    network_.set(Status::notReachable);
    network_.set(Status::notReachable);
    network_.set(Status::unknown);
    platform_->runUntilIdle();
    network_.set(Status::reachableViaCellular);
    platform_->runUntilIdle();

    EXPECT_EQ(heard_, (Statuses{Status::reachableViaEthernetOrWiFi, Status::notReachable, Status::unknown,
                                Status::reachableViaCellular}));
}

TEST_F(ScriptedReachabilityTest, TellsALateListenerThePresentStatusAlone) {
    network_.set(Status::reachableViaCellular);

    listen();
    platform_->runUntilIdle();

    EXPECT_EQ(heard_, Statuses{Status::reachableViaCellular});
}

TEST_F(ScriptedReachabilityTest, ChangesOnAnyThread) {
    listen();

    std::thread([this] {
        for (const auto status : {Status::notReachable, Status::reachableViaCellular}) network_.set(status);
    }).join();
    EXPECT_EQ(heard_, Statuses());
    platform_->runUntilIdle();

    EXPECT_EQ(heard_, (Statuses{Status::reachableViaEthernetOrWiFi, Status::notReachable,
                                Status::reachableViaCellular}));
}

TEST_F(ScriptedReachabilityTest, RefusesHostsOnDemandAndListsAllThatWereAskedFor) {
    network_.refuse("bad.example.com");

    EXPECT_EQ(network_.make("bad.example.com"), nullptr);
    EXPECT_NE(network_.make("good.example.com"), nullptr);
    EXPECT_EQ(network_.hosts(),
              (std::vector<std::string>{"www.example.com", "bad.example.com", "good.example.com"}));
}

} // namespace
} // namespace corvantile
