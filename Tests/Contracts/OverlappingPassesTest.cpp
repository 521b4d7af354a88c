#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Tests/Contracts/Harness.hpp"
#include "Tests/Corvantile/PurchaseFakes.hpp"

#include <semaphore>

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
namespace corvantile::OverlappingPassesTest {

TEST(OverlappingPasses, SendEachTransactionOnceOnRealThreads) {
    constexpr std::int64_t transactionCount = 100;
    std::atomic<std::int64_t> sent{0};
    std::counting_semaphore<2> bothHaveBegun{0};
    DesktopHarness harness;
    const auto router = std::make_shared<RecordingRouter>();
    const auto firstDate = std::make_shared<FakeFirstDate>();
    const auto purchases = std::make_shared<FakePurchases>();
    const auto plugin = std::make_shared<IAPReceiptTrackingPlugin>();
    Corvantile::setAppDelegate(std::make_shared<PluggableApplicationDelegate>(
        PluggableApplicationDelegate::Plugins{router, firstDate, purchases, plugin}));
    router->onLine = [&](const std::string& line) {
        if (!line.starts_with("subscription ")) return;
        // A pass that has sent the first waits until the other has sent the second.
        const auto number = ++sent;
        if (number == 2) bothHaveBegun.release(2);
        if (number > 2) return;
        EXPECT_TRUE(bothHaveBegun.try_acquire_for(std::chrono::seconds(10)));
    };
    std::vector<ReceiptInfo> records;
    for (std::int64_t number = 1; number <= transactionCount; ++number)
        records.push_back(bought(number, number, 2));
    firstDate->dates.onNext(Date{0});
    purchases->categories.onNext({{"", pro(), records}});

    plugin->didBecomeActive(*UIApplication::shared());
    plugin->didBecomeActive(*UIApplication::shared());
    ASSERT_TRUE(harness.runUntil([&] { return sent >= transactionCount; }));

    auto lines = router->take();
    std::erase_if(lines, [](const auto& line) { return !line.starts_with("subscription "); });
    EXPECT_EQ(std::set<std::string>(lines.begin(), lines.end()).size(), lines.size());
}

} // namespace corvantile::OverlappingPassesTest
#endif
