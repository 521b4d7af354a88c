#include "Floors.hpp"

#include "../Allocations.hpp"

#include "CorvantileReactive/CombineLatest.hpp"
#include "CorvantileReactive/PublishSubject.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace {

using namespace corvantile;

std::int64_t sum = 0;
const auto add = [](const int& value) { sum += value; };

void countAllocations(benchmark::State& state, Allocations before) {
    const auto after = Allocations::now();
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(after.count - before.count),
                                                       benchmark::Counter::kAvgIterations);
}

template <class Subject>
void emitTo(benchmark::State& state, const Subject& subject) {
    for (auto _ : state) {
        subject.onNext(1);
        benchmark::DoNotOptimize(sum);
    }
}

void EmitFloor(benchmark::State& state) {
    floors::Subject subject;
    for (int i = 0; i < state.range(0); ++i) subject.add(add);
    for (auto _ : state) {
        subject.next(1);
        benchmark::DoNotOptimize(sum);
    }
}

void EmitPublish(benchmark::State& state) {
    rx::PublishSubject<int> subject;
    for (int i = 0; i < state.range(0); ++i) subject.subscribe(add);
    emitTo(state, subject);
}

void EmitReplay(benchmark::State& state) {
    const auto subject = rx::ReplaySubject<int>::create(1);
    for (int i = 0; i < state.range(0); ++i) subject.subscribe(add);
    emitTo(state, subject);
}

void SubscribeFloor(benchmark::State& state) {
    floors::Subject subject;
    for (int i = 0; i < state.range(0); ++i) subject.add(add);
    for (auto _ : state) subject.remove(subject.add(add));
}

void SubscribeReplay(benchmark::State& state) {
    const auto subject = rx::ReplaySubject<int>::create(1);
    for (int i = 0; i < state.range(0); ++i) subject.subscribe(add);
    subject.onNext(1);
    const auto before = Allocations::now();
    for (auto _ : state) subject.subscribe(add).dispose();
    countAllocations(state, before);
}

const auto twice = [](const int& value) { return value * 2; };
const auto positive = [](const int& value) { return value > 0; };
const auto small = [](const int& value) { return value < 0; };

std::shared_ptr<floors::Node> floorChain() {
    using floors::Node;
    using floors::stage;
    auto last = std::make_shared<floors::CallableNode<decltype(add)>>(add);
    auto skip = stage(
        [skipping = true](const int& v, Node& next) mutable {
            if (skipping) skipping = small(v);
            if (!skipping) next.next(v);
        },
        last);
    auto filter = stage(
        [](const int& v, Node& next) {
            if (positive(v)) next.next(v);
        },
        skip);
    auto map = stage([](const int& v, Node& next) { next.next(twice(v)); }, filter);
    return stage(
        [left = std::int64_t{1} << 60](const int& v, Node& next) mutable {
            if (left == 0) return;
            --left;
            next.next(v);
        },
        map);
}

rx::Observable<int> chainOn(const rx::PublishSubject<int>& subject) {
    return subject.take(std::int64_t{1} << 60).map(twice).filter(positive).skipWhile(small);
}

void ChainFloor(benchmark::State& state) {
    floors::Subject subject;
    const auto chain = floorChain();
    subject.add([chain](const int& value) { chain->next(value); });
    for (auto _ : state) {
        subject.next(1);
        benchmark::DoNotOptimize(sum);
    }
}

void Chain(benchmark::State& state) {
    rx::PublishSubject<int> subject;
    chainOn(subject).subscribe(add);
    emitTo(state, subject);
}

void ChainSubscribeFloor(benchmark::State& state) {
    floors::Subject subject;
    for (auto _ : state) {
        auto chain = floorChain();
        subject.remove(subject.add([chain](const int& value) { chain->next(value); }));
    }
}

void ChainSubscribe(benchmark::State& state) {
    rx::PublishSubject<int> subject;
    const auto chain = chainOn(subject);
    const auto before = Allocations::now();
    for (auto _ : state) chain.subscribe(add).dispose();
    countAllocations(state, before);
}

void CombineFloor(benchmark::State& state) {
    floors::Subject subject;
    std::recursive_mutex mutex;
    int other = 1, latest = 0;
    subject.add([&](const int& value) {
        const std::lock_guard lock(mutex);
        latest = value;
        add(latest + other);
    });
    for (auto _ : state) {
        subject.next(1);
        benchmark::DoNotOptimize(sum);
    }
}

void Combine(benchmark::State& state) {
    rx::PublishSubject<int> first, second;
    rx::combineLatest(first, second, [](int a, int b) { return a + b; }).subscribe(add);
    second.onNext(1);
    emitTo(state, first);
}

// Bytes of one live subscription whose handle is kept.
void memoryOf(benchmark::State& state, const rx::Observable<int>& stream) {
    constexpr int many = 1000;
    for (auto _ : state) {
        std::vector<rx::Disposable> handles;
        handles.reserve(many);
        const auto before = Allocations::now();
        for (int i = 0; i < many; ++i) handles.push_back(stream.subscribe(add));
        state.counters["bytes"] = static_cast<double>(Allocations::now().bytes - before.bytes) / many;
        for (const auto& handle : handles) handle.dispose();
    }
}

void MemoryOfSubscription(benchmark::State& state) { memoryOf(state, rx::PublishSubject<int>()); }

void MemoryOfChain(benchmark::State& state) {
    const rx::PublishSubject<int> subject;
    memoryOf(state, chainOn(subject));
}

BENCHMARK(EmitFloor)->Arg(1)->Arg(8)->Arg(64);
BENCHMARK(EmitPublish)->Arg(1)->Arg(8)->Arg(64);
BENCHMARK(EmitReplay)->Arg(1)->Arg(8);
BENCHMARK(SubscribeFloor)->Arg(0)->Arg(64);
BENCHMARK(SubscribeReplay)->Arg(0)->Arg(64);
BENCHMARK(ChainFloor);
BENCHMARK(Chain);
BENCHMARK(ChainSubscribeFloor);
BENCHMARK(ChainSubscribe);
BENCHMARK(CombineFloor);
BENCHMARK(Combine);
BENCHMARK(MemoryOfSubscription)->Iterations(1);
BENCHMARK(MemoryOfChain)->Iterations(1);

} // namespace

BENCHMARK_MAIN();
