// An event's way to its sinks. The floor makes the same map and hands it to the same number of virtual sinks.
#include "../Allocations.hpp"

#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/TestPlatform.hpp"

#include <benchmark/benchmark.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace corvantile;

std::size_t seen = 0;

class CountingSink final : public AnalyticComponent {
public:
    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override { return names_; }
    void ignore(std::initializer_list<std::string_view>) override {}
    void track(const AnalyticEvent& event) override { seen += event.params->size(); }
    void track(const AnalyticEvent& event, const NSDecimalNumber&, const std::string&) override {
        track(event);
    }
    using AnalyticComponent::trackIAPSubs;
    void trackIAPSubs(const NSDecimalNumber&, const std::string&, const std::string&,
                      const std::optional<Date>&, const std::optional<std::string>&) override {}

private:
    const std::vector<std::string> names_;
};

struct PlainEvent {
    std::string name;
    EventParameters params;
};

class PlainSink {
public:
    virtual ~PlainSink() = default;
    virtual void track(const PlainEvent& event) { seen += event.params.size(); }
};

EventParameters threeTexts() { return {{"level", "three"}, {"player", "Ada"}, {"mode", "practice"}}; }

void countAllocations(benchmark::State& state, std::size_t before) {
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(Allocations::now().count - before),
                                                       benchmark::Counter::kAvgIterations);
}

// `statusToo`: with the fourth parameter, which every event with parameters is given.
void floor(benchmark::State& state, bool statusToo) {
    std::vector<std::shared_ptr<PlainSink>> sinks;
    for (int i = 0; i < state.range(0); ++i) sinks.push_back(std::make_shared<PlainSink>());
    for (auto _ : state) {
        PlainEvent event{"level_up", threeTexts()};
        if (statusToo) event.params.insert_or_assign("connection_status", "wifi");
        for (const auto& sink : sinks) sink->track(event);
        benchmark::DoNotOptimize(seen);
    }
}

void TrackFloorThree(benchmark::State& state) { floor(state, false); }
void TrackFloorFour(benchmark::State& state) { floor(state, true); }

void Track(benchmark::State& state) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    const auto router = std::make_shared<AnalyticPlugin>();
    for (int i = 0; i < state.range(0); ++i) router->registerComponents({std::make_shared<CountingSink>()});
    const auto before = Allocations::now().count;
    for (auto _ : state) {
        router->track(AnalyticEvent("level_up", threeTexts()));
        benchmark::DoNotOptimize(seen);
    }
    countAllocations(state, before);
}

void RouteAlone(benchmark::State& state) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    const auto router = std::make_shared<AnalyticPlugin>();
    for (int i = 0; i < state.range(0); ++i) router->registerComponents({std::make_shared<CountingSink>()});
    const AnalyticEvent event("level_up", threeTexts());
    const auto before = Allocations::now().count;
    for (auto _ : state) {
        router->track(event);
        benchmark::DoNotOptimize(seen);
    }
    countAllocations(state, before);
}

BENCHMARK(TrackFloorThree)->Arg(4);
BENCHMARK(TrackFloorFour)->Arg(4);
BENCHMARK(Track)->Arg(4)->Arg(12);
BENCHMARK(RouteAlone)->Arg(4);

} // namespace

BENCHMARK_MAIN();
