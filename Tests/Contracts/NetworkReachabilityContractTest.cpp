#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"

#include "Tests/Contracts/Harness.hpp"

namespace corvantile::NetworkReachabilityContractTest {

using namespace std::chrono_literals;

using Status = NetworkReachabilityStatus;

// What one listener heard, and whether the platform still holds it.
class Ear {
public:
    NetworkReachabilityManager::Listener listener(std::function<void()> then = [] {}) {
        return [this, grip = grip_, act = std::move(then)](Status) {
            ++heard;
            act();
        };
    }
    // Call once, when no more listeners are made.
    bool isReleased() {
        const std::weak_ptr<int> weak = grip_;
        return weak.use_count() == 1;
    }

    std::atomic<int> heard{0};

private:
    std::shared_ptr<int> grip_ = std::make_shared<int>(0);
};

template <class Harness>
class NetworkReachabilityContract : public PortContract<Harness> {
protected:
    std::shared_ptr<NetworkReachabilityManager> manager_ =
        this->ports().reachability->make("www.example.com");
    std::shared_ptr<DispatchQueue> queue_ = this->makeQueue();

    // Runs `body` as an item of the listeners' queue, so that no delivery comes in between, and waits until
    // deliveries have had their time.
    bool runOnQueue(const std::function<void()>& body) {
        std::atomic<bool> done{false};
        queue_->async([&] {
            body();
            queue_->asyncAfter(30ms, [&] { done = true; });
        });
        return this->runUntil([&] { return done.load(); });
    }
};
TYPED_TEST_SUITE(NetworkReachabilityContract, Harnesses);

TYPED_TEST(NetworkReachabilityContract, TellsThePresentStatusOnTheQueueAndNeverInsideTheCall) {
    Ear ear;

    EXPECT_TRUE(this->runOnQueue([&] {
        EXPECT_TRUE(this->manager_->startListening(
            this->queue_, ear.listener([queue = this->queue_] { EXPECT_TRUE(queue->isCurrent()); })));
        EXPECT_EQ(ear.heard, 0);
    }));

    EXPECT_TRUE(this->runUntil([&] { return ear.heard >= 1; }));
}

TYPED_TEST(NetworkReachabilityContract, IsSilentOnceStoppedReplacedOrDestroyed) {
    const auto start = [&](Ear& ear) { this->manager_->startListening(this->queue_, ear.listener()); };
    const struct {
        const char* act;
        std::function<void(Ear& ear, Ear& next)> silence;
        int heard, heardByNext;
    } cases[] = {
        {"stopped", [&](Ear& ear, Ear&) { start(ear), this->manager_->stopListening(); }, 0, 0},
        {"replaced", [&](Ear& ear, Ear& next) { start(ear), start(next); }, 0, 1},
        {"destroyed", [&](Ear& ear, Ear&) { start(ear), this->manager_.reset(); }, 0, 0},
        {"destroyed inside its own delivery",
         [&](Ear& ear, Ear&) {
             const auto end = [&] { this->manager_.reset(); };
             this->manager_->startListening(this->queue_, ear.listener(end));
         },
         1, 0},
    };
    for (const auto& [act, silence, heard, heardByNext] : cases) {
        SCOPED_TRACE(act);
        Ear ear;
        Ear next;
        this->manager_ = this->ports().reachability->make("www.example.com");

        EXPECT_TRUE(this->runOnQueue([&, &quiet = silence] { quiet(ear, next); }));

        EXPECT_EQ(ear.heard, heard);
        EXPECT_EQ(next.heard, heardByNext);
        EXPECT_TRUE(this->runUntil([&] { return ear.isReleased(); }));
        this->manager_.reset(); // `next` goes out of scope
    }
}

TYPED_TEST(NetworkReachabilityContract, LetsAManagerOutliveTheProcess) {
    Ear ear;
    this->manager_->startListening(this->queue_, ear.listener());

    this->endProcess();
    this->manager_->startListening(this->queue_, ear.listener());
    this->manager_.reset();

    EXPECT_TRUE(ear.isReleased());
}

} // namespace corvantile::NetworkReachabilityContractTest
