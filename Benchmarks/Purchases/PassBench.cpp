// A pass of purchase analytics over the records. The floors: as many saves of a marker into the same vault,
// turn by turn, since what a flush costs swings from second to second; and as many look-ups.
#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileIAP/IAPReceiptPluggable.hpp"
#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "CorvantileReactive/Factories.hpp"
#include "CorvantileReactive/PublishSubject.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/TestPlatform.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <semaphore>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace corvantile;
using Records = std::vector<ReceiptInfo>;

class Purchases final : public IAPReceiptPluggable {
public:
    [[nodiscard]] rx::Observable<std::vector<ProductCategory>> productCategories() override {
        return categories.asObservable();
    }
    [[nodiscard]] rx::Observable<std::vector<RenewalInfo>> renewals() override {
        return rx::empty<std::vector<RenewalInfo>>();
    }
    rx::PublishSubject<std::vector<ProductCategory>> categories;
};

class InstallDate final : public FirstDatePluggable {
public:
    [[nodiscard]] rx::Observable<Date> firstDate() override { return rx::just(Date{0}); }
};

// Counts, and tells when all that a turn sends is there.
class Router final : public AnalyticPluggable {
public:
    void track(const AnalyticEvent&) override { count(); }
    void track(const AnalyticEvent&, const NSDecimalNumber&, const std::string&) override { count(); }
    void registerComponents(std::initializer_list<std::shared_ptr<AnalyticComponent>>) override {}
    void flush() override {}
    void trackIAPSubs(const NSDecimalNumber&, const std::string&, const std::string&,
                      const std::optional<Date>&, const std::optional<std::string>&) override {
        count();
    }
    void expect(int calls) { left_ = calls; }
    void wait() { done_.acquire(); }

private:
    void count() {
        if (--left_ == 0) done_.release();
    }
    int left_ = 0;
    std::binary_semaphore done_{0};
};

// The plug-in on the current platform, with a pass begun.
struct Host {
    Host() {
        Corvantile::setAppDelegate(
            std::make_shared<PluggableApplicationDelegate>(PluggableApplicationDelegate::Plugins{
                router, std::make_shared<InstallDate>(), purchases, plugin}));
        plugin->didBecomeActive(*UIApplication::shared());
    }
    void publish(Records records) { purchases->categories.onNext({{"", product, std::move(records)}}); }

    std::shared_ptr<SKProduct> product =
        std::make_shared<SKProduct>("pro", NSDecimalNumber(499, -2, false), PriceLocale{"EUR", "DE"});
    std::shared_ptr<Router> router = std::make_shared<Router>();
    std::shared_ptr<Purchases> purchases = std::make_shared<Purchases>();
    std::shared_ptr<IAPReceiptTrackingPlugin> plugin = std::make_shared<IAPReceiptTrackingPlugin>();
};

// First purchases, three calls of the router each.
Records records(std::int64_t first, std::int64_t count) {
    Records made;
    made.reserve(static_cast<std::size_t>(count));
    for (std::int64_t number = first; number < first + count; ++number) {
        auto& record = made.emplace_back();
        record.transactionID = record.originalTransactionID = number;
        record.purchaseDate = Date{static_cast<double>(number * 7919 % 10007)};
        record.expiresDate = Date{2e9};
    }
    return made;
}

void save(std::int64_t first, std::int64_t count) {
    for (std::int64_t number = first; number < first + count; ++number) {
        const auto key = std::to_string(number);
        Locksmith::saveData({{key, true}}, key);
    }
}

template <class Work>
double seconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void UnmarkedPass(benchmark::State& state) {
    constexpr std::int64_t turn = 20;
    const TemporaryFolder folder;
    DesktopPlatform platform({.stateFolder = folder.path()});
    Host host;
    platform.runMainLoopFor(std::chrono::milliseconds(100)); // the subscription stands
    std::int64_t next = 1'000'000;
    double floor = 0;
    double ours = 0;
    const auto pass = [&] {
        host.router->expect(static_cast<int>(3 * turn));
        host.publish(records(std::exchange(next, next + turn), turn));
        host.router->wait();
    };
    pass(); // the vault is open now
    for (auto _ : state)
        for (std::int64_t done = 0; done < state.range(0); done += turn) {
            if (done % (2 * turn) == 0)
                floor += seconds([&] { save(std::exchange(next, next + turn), turn); });
            ours += seconds(pass);
            if (done % (2 * turn) != 0)
                floor += seconds([&] { save(std::exchange(next, next + turn), turn); });
        }
    state.counters["ratio"] = ours / floor;
    state.counters["save_us"] = 1e6 * floor / static_cast<double>(state.iterations() * state.range(0));
}

void MarkedPass(benchmark::State& state) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    Host host;
    platform->runUntilIdle();
    save(0, state.range(0));
    const auto all = records(0, state.range(0));
    double floor = 0;
    double ours = 0;
    for (auto _ : state) {
        floor += seconds([&] {
            for (const auto& record : all)
                benchmark::DoNotOptimize(
                    Locksmith::loadDataForUserAccount(std::to_string(record.transactionID)));
        });
        ours += seconds([&] {
            host.publish(all);
            platform->runUntilIdle();
        });
    }
    state.counters["ratio"] = ours / floor;
    state.counters["lookup_ns"] = 1e9 * floor / static_cast<double>(state.iterations() * state.range(0));
}

BENCHMARK(UnmarkedPass)->Arg(1000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(MarkedPass)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
