#include "CorvantileLocalStore/detail/Ports/LocalPaymentQueue.hpp"
#include "CorvantilePlatform/Foundation/NSBundle.hpp"
#include "Tests/CorvantileLocalStore/StoreFixture.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::LocalPaymentQueueTest {

using namespace std::chrono_literals;

class Listener final : public SKPaymentTransactionObserver {
public:
    explicit Listener(SKPaymentQueue& queue) : registration(queue.addTransactionObserver(*this)) {}

    void updatedTransactions(SKPaymentQueue& queue, const Transactions& batch) override {
        static constexpr const char* states[] = {"open", "bought", "failed", "restored", "deferred"};
        for (const auto& transaction : batch) {
            const auto state = transaction->transactionState();
            heard.push_back(
                states[static_cast<int>(state)] +
                (transaction->transactionDate() ? " " + dayOf(*transaction->transactionDate()) : ""));
            if (state == SKPaymentTransactionState::purchased) queue.finishTransaction(*transaction);
        }
    }
    bool shouldAddStorePayment(SKPaymentQueue&, const std::shared_ptr<SKPayment>&,
                               const std::shared_ptr<SKProduct>&) override {
        heard.push_back("asked");
        return true;
    }

    std::vector<std::string> heard;
    std::unique_ptr<PaymentObserverRegistration> registration;
};

TestOptions storeOptions(double clockRate) {
    TestOptions options;
    options.localStore = TestStoreOptions{.catalogue = fileText(CORVANTILE_SAMPLE_CATALOGUE),
                                          .clockRate = clockRate,
                                          .start = dayAtTen("2024-01-31")};
    return options;
}

TEST(LocalPaymentQueue, DeliversRenewalsWhileTheAppRunsAndTheOthersAtTheNextLaunch) {
    TestDevice device;
    auto platform = TestPlatform::launch(device, storeOptions(86400)); // a day each second
    auto listener = std::make_unique<Listener>(*SKPaymentQueue::defaultQueue());
    EXPECT_EQ(NSBundle::main()->appStoreReceipt(), std::nullopt);
    SKPaymentQueue::defaultQueue()->addPayment(std::make_shared<SKPayment>(monthly));
    platform->runUntilIdle();
    EXPECT_NE(NSBundle::main()->appStoreReceipt(), std::nullopt);
    platform->advance(6999ms);
    EXPECT_THAT(listener->heard, ElementsAre("open", "bought 2024-01-31"));
    platform->advance(1ms); // a week's trial
    EXPECT_THAT(listener->heard, ElementsAre("open", "bought 2024-01-31", "bought 2024-02-07"));
    EXPECT_LE(platform->pendingTimers(), 2u);

    platform->localStore().advance(24h * 29); // the timer that waits must move
    platform->advance(1s);
    EXPECT_EQ(listener->heard.back(), "bought 2024-03-07");
    listener.reset();
    platform = TestPlatform::relaunch(std::move(platform));
    device.pass(62s);
    listener = std::make_unique<Listener>(*SKPaymentQueue::defaultQueue());
    platform->runUntilIdle();
    EXPECT_THAT(listener->heard, ElementsAre("bought 2024-04-07", "bought 2024-05-07"));
}

TEST(LocalPaymentQueue, GoesOnWithAPaymentThatTheEndOfTheProcessCutOff) {
    TestDevice device;
    auto platform = TestPlatform::launch(device, storeOptions(1));
    SKPaymentQueue::defaultQueue()->addPayment(std::make_shared<SKPayment>(coins));
    platform->kill();
    platform.reset();
    platform = TestPlatform::launch(device, storeOptions(1));
    const Listener listener(*SKPaymentQueue::defaultQueue());
    platform->runUntilIdle();
    EXPECT_THAT(listener.heard, ElementsAre("open", "bought 2024-01-31"));
}

TEST(LocalPaymentQueue, AsksAboutAPromotedPurchaseOnceSomebodyIsThereToAnswer) {
    TestDevice device;
    auto platform = TestPlatform::launch(device, storeOptions(1));
    platform->localStore().promote(coins);
    platform = TestPlatform::relaunch(std::move(platform));
    EXPECT_THAT(SKPaymentQueue::defaultQueue()->transactions(), IsEmpty());
    platform->runUntilIdle();
    const Listener listener(*SKPaymentQueue::defaultQueue());
    platform->runUntilIdle();
    EXPECT_THAT(listener.heard, ElementsAre("asked", "open", "bought 2024-01-31"));
}

TEST(LocalStoreClock, IsTheAppsUnlessTheHostWantsTheDevicesAndNeverThatOfTimers) {
    for (const bool isApps : {true, false}) {
        TestDevice device;
        auto options = storeOptions(1);
        options.localStore->setsAppTime = isApps;
        const auto platform = TestPlatform::launch(device, options);
        const auto& clock = *platform->ports().clock;
        bool isTimerDue = false;
        DispatchQueue::main()->asyncAfter(1h, [&] { isTimerDue = true; });
        platform->localStore().advance(24h);
        platform->advance(59min);
        EXPECT_FALSE(isTimerDue);
        EXPECT_EQ(dayOf(clock.now()), isApps ? "2024-02-01" : "2024-01-02");
        EXPECT_EQ(dayOf(clock.deviceNow()), "2024-01-02");
    }
}

// A disk that is full while `isFull`.
class FailingStorage final : public StoreStorage {
public:
    Rows load() override { return kept_.load(); }
    bool hasChangedElsewhere() override { return false; }
    bool commit(const Changes& changes, const Claims& claimed) override {
        if (isFull) throw localStoreError(LocalStoreErrorCode::storage, "The disk is full.");
        return kept_.commit(changes, claimed);
    }
    bool isFull = false;

private:
    InMemoryStoreStorage kept_;
};

TEST(LocalPaymentQueue, FailsPaymentsThatCannotBeWrittenDownAndKeepsWhatCouldNotBeFinished) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    const auto& ports = platform->ports();
    const auto storage = std::make_shared<FailingStorage>();
    const auto store = std::make_shared<LocalStore>(
        LocalStoreOptions{.catalogue = sampleCatalogue(), .clock = ports.clock, .storage = storage});
    const auto queue = LocalPaymentQueue::make(store, ports.queues->main(), ports.console);
    const Listener listener(*queue);
    store->buyElsewhere(coins);
    storage->isFull = true;
    platform->runUntilIdle();
    EXPECT_THAT(listener.heard, ElementsAre("bought 2024-01-02"));
    EXPECT_EQ(queue->transactions().size(), 1u);
    EXPECT_THAT(platform->console().lines(), ElementsAre("The store fails: The disk is full."));

    queue->addPayment(std::make_shared<SKPayment>(coins));
    platform->runUntilIdle();
    EXPECT_EQ(listener.heard.back(), "failed");
    EXPECT_THROW(store->buyElsewhere(coins), NSError);
    const auto waiting = queue->transactions();
    ASSERT_EQ(waiting.size(), 2u);
    storage->isFull = false;
    for (const auto& transaction : waiting) queue->finishTransaction(*transaction);
    EXPECT_THAT(queue->transactions(), IsEmpty());
    EXPECT_EQ(store->purchases().size(), 1u);
}

} // namespace corvantile::LocalPaymentQueueTest
