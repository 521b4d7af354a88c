#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

#include <thread>

namespace corvantile::VirtualTimeTest {

using namespace std::chrono_literals;

class VirtualTime : public ProcessTest {
protected:
    // An item that notes its name and the seconds since the device's start.
    WorkItem note(std::string name) {
        return [this, text = std::move(name)] {
            const auto seconds = device_.now() - TestDevice::startDate;
            journal_.push_back(text + "@" + std::to_string(static_cast<int>(seconds.count())));
        };
    }

    using Journal = std::vector<std::string>;

    Journal journal_;
    std::shared_ptr<DispatchQueue> main_ = DispatchQueue::main();
    std::shared_ptr<DispatchQueue> serial_ =
        platform_->ports().queues->makeSerial("serial", QualityOfService::background);
};

TEST_F(VirtualTime, ShowsEachTimerItsOwnDeadlineAndRunsWhatItPostsInBetween) {
    main_->asyncAfter(5s, note("five"));
    main_->asyncAfter(2s, [this] {
        note("two")();
        serial_->async(note("posted"));
        serial_->asyncAfter(1s, note("three"));
    });

    platform_->advance(10s);

    EXPECT_EQ(journal_, (Journal{"two@2", "posted@2", "three@3", "five@5"}));
    EXPECT_EQ(device_.now(), TestDevice::startDate + 10s);
}

TEST_F(VirtualTime, RunsLateWhatFellDueWhileTheAppWasSuspended) {
    main_->asyncAfter(2s, note("b"));
    main_->asyncAfter(1s, note("a"));
    serial_->asyncAfter(4s, note("not yet"));

    device_.pass(3s);
    EXPECT_EQ(journal_, Journal());
    platform_->runUntilIdle();

    EXPECT_EQ(journal_, (Journal{"a@3", "b@3"}));
}

TEST_F(VirtualTime, KeepsTimersApartFromTheWallClock) {
    const auto& clock = *platform_->ports().clock;
    bool ran = false;
    main_->asyncAfter(1h, [&] { ran = true; });

    device_.setNow(TestDevice::startDate + 24h);
    platform_->runUntilIdle();
    EXPECT_FALSE(ran);
    device_.setNow(Date{0});
    platform_->advance(1h);

    EXPECT_TRUE(ran);
    EXPECT_EQ(clock.now(), Date{3600});
    device_.setTimeZoneOffset(-5h);
    EXPECT_EQ(clock.localOffset(clock.now()), -5h);
}

TEST_F(VirtualTime, PassesForBothProcessesOfADeviceWhenTheirTurnComes) {
    const auto extension = TestPlatform::launch(device_);
    main_->asyncAfter(1s, note("app"));
    DispatchQueue::main()->asyncAfter(1s, note("extension"));

    platform_->advance(1s);
    EXPECT_EQ(journal_, Journal{"app@1"});
    EXPECT_EQ(&Platform::current(), extension.get());
    extension->runUntilIdle(); // its second has passed as well
    EXPECT_EQ(journal_, (Journal{"app@1", "extension@1"}));

    platform_->makeCurrent();
    EXPECT_EQ(&Platform::current(), platform_.get());
    extension->makeCurrent();
    platform_.reset();
    EXPECT_EQ(&Platform::current(), extension.get());
}

using VirtualTimeDeathTest = VirtualTime;

TEST_F(VirtualTimeDeathTest, NamesWhatATestDoesWrong) {
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { main_->async([&] { platform_->runUntilIdle(); }); }, "from inside one of its own items"},
        {[&] { main_->async([&] { platform_.reset(); }); }, "never from inside one of its items"},
        {[&] { std::thread([&] { platform_->runUntilIdle(); }).join(); }, "on the thread that launched it"},
        {[&] { platform_->advance(-1s); }, "backwards"},
        {[&] { device_.reinstall(); }, "1 process\\(es\\) still run"},
        {[&] { (platform_->kill(), platform_->advance(1s)); }, "runs nothing any more"},
    };
    for (const auto& [mistake, report] : cases) EXPECT_DEATH((mistake(), platform_->runUntilIdle()), report);
}

TEST(TestOptionsDeathTest, EndAnEndlessLoopByTheItemLimit) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device, {.seed = 7, .itemLimit = 1000});
    std::function<void()> again = [&] { DispatchQueue::main()->asyncAfter(1ms, again); };
    again();

    EXPECT_DEATH(platform->advance(1h), "1000 items ran in one call with seed 7");
    platform->advance(500ms);
}

} // namespace corvantile::VirtualTimeTest
