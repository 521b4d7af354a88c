// Long lives in virtual time. Nothing here has a floor: the counters show what grows, and what does not.
#include "Benchmarks/Allocations.hpp"
#include "Benchmarks/Host/WholeHost.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/TestPlatform.hpp"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace corvantile;

constexpr std::chrono::hours day{24};

class CountingSink final : public AnalyticComponent {
public:
    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override { return ignored_; }
    void ignore(std::initializer_list<std::string_view>) override {}
    void track(const AnalyticEvent&) override { ++events; }
    void track(const AnalyticEvent&, const NSDecimalNumber&, const std::string&) override { ++events; }
    using AnalyticComponent::trackIAPSubs;
    void trackIAPSubs(const NSDecimalNumber&, const std::string&, const std::string&,
                      const std::optional<Date>&, const std::optional<std::string>&) override {}

    std::int64_t events = 0;

private:
    std::vector<std::string> ignored_;
};

std::vector<std::string> plans(std::int64_t count) {
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(count));
    for (std::int64_t number = 0; number < count; ++number) names.push_back("plan" + std::to_string(number));
    return names;
}

// A group for each, as a customer has one subscription a group.
std::string catalogueOf(const std::vector<std::string>& names) {
    std::string groups;
    for (const auto& name : names)
        groups += (groups.empty() ? "" : ",") + std::string(R"({"id": ")") + name + R"(", "name": ")" + name +
                  R"(", "subscriptions": [{"productID": ")" + name +
                  R"(", "type": "RecurringSubscription", "displayPrice": "1",
                     "recurringSubscriptionPeriod": "P1D", "subscriptionGroupID": ")" +
                  name + R"("}]})";
    return R"({"version": {"major": 3, "minor": 0}, "subscriptionGroups": [)" + groups + "]}";
}

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// A customer of all the daily subscriptions whose time goes on.
double secondsOfDays(const std::vector<std::string>& names, std::int64_t days,
                     const std::shared_ptr<AnalyticComponent>& sink) {
    TestDevice device;
    TestOptions options;
    options.localStore = TestStoreOptions{.catalogue = catalogueOf(names)};
    const auto platform = TestPlatform::launch(device, options);
    const WholeHost host(sink, names);
    platform->runUntilIdle();
    for (const auto& name : names) platform->localStore().buyElsewhere(name);
    platform->runUntilIdle();
    const double begin = processorSeconds();
    for (std::int64_t number = 0; number < days; ++number) platform->advance(day);
    return processorSeconds() - begin;
}

// The whole app, which reads the receipt again after each renewal: all periods that there ever were.
void AppRenewals(benchmark::State& state) {
    const auto names = plans(state.range(0));
    const auto days = state.range(1);
    double seconds = 0;
    std::int64_t events = 0;
    for (auto _ : state) {
        const auto sink = std::make_shared<CountingSink>();
        seconds += secondsOfDays(names, days, sink);
        events = sink->events;
    }
    const auto rows = static_cast<double>(state.range(0) * days * (days + 3) / 2);
    state.counters["events"] = static_cast<double>(events);
    state.counters["us_a_receipt_row"] = 1e6 * seconds / rows;
}

// Ten years of daily launches on one device.
void DailyLaunches(benchmark::State& state) {
    constexpr int years = 10;
    constexpr int daysAYear = 365;
    for (auto _ : state) {
        TestDevice device;
        TestOptions options;
        options.localStore = TestStoreOptions{.catalogue = catalogueOf({"plan"})};
        std::vector<std::size_t> live;
        live.reserve(years);
        const double begin = processorSeconds();
        for (int number = 1; number <= years * daysAYear; ++number) {
            const auto platform = TestPlatform::launch(device, options);
            const WholeHost host(std::make_shared<CountingSink>(), {"plan"});
            platform->advance(day);
            if (number % daysAYear == 0) live.push_back(Allocations::now().bytes);
        }
        state.counters["us_a_launch"] = 1e6 * (processorSeconds() - begin) / (years * daysAYear);
        state.counters["bytes_after_1"] = static_cast<double>(live.front());
        state.counters["bytes_after_10"] = static_cast<double>(live.back());
    }
}

const auto atOnce = [](auto* benchmark) { benchmark->Iterations(1)->Unit(benchmark::kMillisecond); };

BENCHMARK(AppRenewals)->Args({10, 60})->Args({10, 120})->Args({10, 240})->Apply(atOnce);
BENCHMARK(DailyLaunches)->Apply(atOnce);

} // namespace

BENCHMARK_MAIN();
