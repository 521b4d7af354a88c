#pragma once

#include "Benchmarks/Company.hpp"
#include "Tests/CorvantileDesktop/FlushCount.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

// How the benchmarks of storage measure: floor and framework take turns, since what a flush costs swings from
// second to second, and the medians count.
namespace corvantile {

// One side's turns.
class Measured {
public:
    // Takes `batch` calls of `work` for one turn.
    template <class Work>
    void take(Work work, int batch = 1) {
        flushes_ += flushesOf([&] {
            const auto start = std::chrono::steady_clock::now();
            for (int i = 0; i < batch; ++i) work();
            const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
            times_.push_back(passed.count() / batch);
        });
        calls_ += batch;
    }

    [[nodiscard]] double last() const { return times_.back(); } // seconds a call
    [[nodiscard]] double median() {
        const auto middle = times_.begin() + static_cast<std::ptrdiff_t>(times_.size() / 2);
        std::nth_element(times_.begin(), middle, times_.end());
        return *middle;
    }
    [[nodiscard]] double flushesEach() const { return flushes_ / static_cast<double>(calls_); }

private:
    std::vector<double> times_;
    int flushes_ = 0;
    int calls_ = 0;
};

// Floor and framework side by side.
struct Turns {
    Measured floor;
    Measured ours;

    // Both, one after the other: the floor first unless `oursFirst`, for whoever comes second may find the
    // disk warm.
    template <class Floor, class Ours>
    void take(benchmark::State& state, Floor floorWork, Ours oursWork, int batch = 1,
              bool oursFirst = false) {
        if (!oursFirst) floor.take(floorWork, batch);
        ours.take(oursWork, batch);
        if (oursFirst) floor.take(floorWork, batch);
        state.SetIterationTime(ours.last());
    }

    // In nanoseconds and flushes a call.
    void report(benchmark::State& state) {
        state.counters["floor_ns"] = floor.median() * 1e9;
        state.counters["ours_ns"] = ours.median() * 1e9;
        state.counters["ratio"] = ours.median() / floor.median();
        state.counters["floor_flushes"] = floor.flushesEach();
        state.counters["ours_flushes"] = ours.flushesEach();
    }
};

} // namespace corvantile
