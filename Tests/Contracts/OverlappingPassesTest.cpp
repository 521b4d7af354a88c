#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Platform/Application/UIApplication.hpp"
#include "Reactive/Factories.hpp"
#include "Tests/Contracts/Harness.hpp"
#include "Tests/Corvantile/PurchaseFakes.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <semaphore>
#include <set>
#include <string>
#include <vector>

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
namespace corvantile {
namespace {

constexpr std::int64_t shared = 100;

// Frames what all passes share with a transaction of each pass's own before and after it, so that a test can
// tell where a pass stands.
class FramedPurchases final : public IAPReceiptPluggable {
public:
    [[nodiscard]] rx::Observable<std::vector<ProductCategory>> productCategories() override {
        const std::int64_t pass = ++passes_;
        std::vector<ReceiptInfo> records;
        for (std::int64_t number = 1; number <= shared; ++number)
            records.push_back(bought(number, number, 2));
        return rx::just(std::vector<ProductCategory>{{"begin", pro(), {bought(1000 + pass, 1000 + pass, 2)}},
                                                     {"", pro(), records},
                                                     {"end", pro(), {bought(2000 + pass, 2000 + pass, 2)}}});
    }
    [[nodiscard]] rx::Observable<std::vector<RenewalInfo>> renewals() override {
        return rx::just(std::vector<RenewalInfo>());
    }

private:
    std::int64_t passes_ = 0;
};

TEST(OverlappingPasses, SendEachTransactionOnceOnRealThreads) {
    DesktopHarness harness;
    const auto router = std::make_shared<RecordingRouter>();
    const auto firstDate = std::make_shared<FakeFirstDate>();
    const auto plugin = std::make_shared<IAPReceiptTrackingPlugin>();
    firstDate->dates.onNext(Date{0});
    Corvantile::setAppDelegate(
        std::make_shared<PluggableApplicationDelegate>(PluggableApplicationDelegate::Plugins{
            router, firstDate, std::make_shared<FramedPurchases>(), plugin}));
    std::atomic<int> begun{0};
    std::counting_semaphore<2> bothHaveBegun{0};
    std::atomic<int> ended{0};
    router->onLine = [&](const std::string& line) {
        if (line.starts_with("subscribe_begin")) {
            if (++begun == 2) bothHaveBegun.release(2);
            EXPECT_TRUE(bothHaveBegun.try_acquire_for(std::chrono::seconds(10)));
        }
        if (line.starts_with("subscription 200")) ++ended;
    };

    plugin->didBecomeActive(*UIApplication::shared());
    plugin->didBecomeActive(*UIApplication::shared());
    ASSERT_TRUE(harness.runUntil([&] { return ended == 2; }));

    const auto lines = router->take();
    std::multiset<std::string> reported;
    for (const auto& line : lines)
        if (line.starts_with("subscription ")) reported.insert(line.substr(0, line.find(':')));
    EXPECT_EQ(reported.size(), static_cast<std::size_t>(shared + 4));
    EXPECT_EQ(std::set<std::string>(reported.begin(), reported.end()).size(), reported.size());
}

} // namespace
} // namespace corvantile
#endif
