// Streams that change threads. The rows are stable only on one core: `taskset -c 1 queue_bench`.
#include "Floors.hpp"

#include "../Allocations.hpp"

#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileReactive/PublishSubject.hpp"
#include "CorvantileReactive/SerialDispatchQueueScheduler.hpp"

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <semaphore>
#include <thread>
#include <vector>

namespace {

using namespace corvantile;

constexpr int many = 100'000;
constexpr int last = many - 1;

// A worker that drains what waits in a vector, in batches.
class Drain {
public:
    explicit Drain(std::binary_semaphore& done) : done_(done), worker_([this] { run(); }) {}
    ~Drain() {
        push(-1);
        worker_.join();
    }

    void push(int value) {
        std::unique_lock lock(mutex_);
        waiting_.push_back(value);
        const bool first = waiting_.size() == 1;
        lock.unlock();
        if (first) wake_.notify_one();
    }

private:
    void run() {
        std::vector<int> batch;
        for (bool open = true; open; batch.clear()) {
            {
                std::unique_lock lock(mutex_);
                wake_.wait(lock, [this] { return !waiting_.empty(); });
                batch.swap(waiting_);
            }
            for (const int value : batch) {
                if (value == last) done_.release();
                open = value >= 0;
            }
        }
    }

    std::binary_semaphore& done_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::vector<int> waiting_;
    std::thread worker_;
};

void ObserveOnManyFloor(benchmark::State& state) {
    std::binary_semaphore done{0};
    Drain drain(done);
    floors::Subject subject;
    subject.add([&](const int& value) { drain.push(value); });
    for (auto _ : state) {
        for (int i = 0; i < many; ++i) subject.next(i);
        done.acquire();
    }
    state.SetItemsProcessed(state.iterations() * many);
}

void ObserveOnMany(benchmark::State& state) {
    rx::PublishSubject<int> subject;
    std::binary_semaphore done{0};
    const auto subscription = subject.observeOn(rx::backgroundScheduler()).subscribe([&](int value) {
        if (value == last) done.release();
    });
    const auto before = Allocations::now();
    for (auto _ : state) {
        for (int i = 0; i < many; ++i) subject.onNext(i);
        done.acquire();
    }
    state.SetItemsProcessed(state.iterations() * many);
    const auto allocated = static_cast<double>(Allocations::now().count - before.count);
    state.counters["allocations/value"] = allocated / static_cast<double>(state.iterations()) / many;
    subscription.dispose();
}

void RoundTripFloor(benchmark::State& state) {
    std::binary_semaphore there{0}, back{0};
    bool open = true;
    std::thread worker([&] {
        for (there.acquire(); open; there.acquire()) back.release();
    });
    for (auto _ : state) {
        there.release();
        back.acquire();
    }
    open = false;
    there.release();
    worker.join();
}

void RoundTrip(benchmark::State& state) {
    rx::PublishSubject<int> subject;
    std::binary_semaphore back{0};
    const auto subscription =
        subject.observeOn(rx::backgroundScheduler()).subscribe([&](int) { back.release(); });
    for (auto _ : state) {
        subject.onNext(1);
        back.acquire();
    }
    subscription.dispose();
}

BENCHMARK(ObserveOnManyFloor)->UseRealTime();
BENCHMARK(ObserveOnMany)->UseRealTime();
BENCHMARK(RoundTripFloor)->UseRealTime();
BENCHMARK(RoundTrip)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const auto folder = std::filesystem::temp_directory_path() / "corvantile-queue-bench";
    {
        const DesktopPlatform platform(DesktopOptions{.stateFolder = folder});
        benchmark::RunSpecifiedBenchmarks();
    }
    std::filesystem::remove_all(folder);
}
