// A batch of transactions through both purchase plug-ins. The floor is a plain loop that finishes the same
// ones as often, and prints the same lines, on a queue whose batch nobody else handles.
#include "Corvantile/Plugin/Products/ConsumablePlugin.hpp"
#include "Corvantile/Plugin/Products/SKProductPromoPlugin.hpp"
#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Store/SKPayment.hpp"
#include "CorvantileTest/ScriptedStore.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/TestPlatform.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace corvantile;

// A process with a batch to deliver, made anew for each turn: the store writes down what it is asked.
struct Shop {
    explicit Shop(std::int64_t size) {
        for (std::int64_t i = 0; i < size; ++i) batch.push_back(platform->store().makeTransaction("gems"));
    }

    TestDevice device;
    std::unique_ptr<TestPlatform> platform = TestPlatform::launch(device);
    SKPaymentQueue::Transactions batch;
};

// The plain loop: an observer that finishes, and keeps the product of each.
class PlainObserver final : public SKPaymentTransactionObserver {
public:
    explicit PlainObserver(bool isPromoted) : isPromoted_(isPromoted) {}

    void updatedTransactions(SKPaymentQueue& queue, const Transactions& transactions) override {
        std::vector<std::string> products;
        for (const auto& transaction : transactions) {
            queue.finishTransaction(*transaction);
            products.push_back(transaction->payment().productIdentifier());
        }
        benchmark::DoNotOptimize(products);
        if (!isPromoted_) return;
        for (const auto& transaction : transactions) queue.finishTransaction(*transaction);
        auto& console = *Platform::current().ports().console;
        for (const auto& transaction : transactions)
            console.debugPrint("Transaction (" + *transaction->transactionIdentifier() + ") is purchased.");
    }

private:
    const bool isPromoted_;
};

void run(benchmark::State& state, Shop& shop) {
    shop.platform->runUntilIdle();
    state.ResumeTiming();
    shop.platform->store().deliver(std::move(shop.batch));
    shop.platform->runUntilIdle();
    state.PauseTiming();
}

void floor(benchmark::State& state, bool isPromoted) {
    for (auto _ : state) {
        state.PauseTiming();
        std::optional<Shop> shop(state.range(0));
        PlainObserver observer(isPromoted);
        auto registration = SKPaymentQueue::defaultQueue()->addTransactionObserver(observer);
        run(state, *shop);
        registration.reset();
        shop.reset();
        state.ResumeTiming();
    }
}

void plugins(benchmark::State& state, bool isPromoted) {
    for (auto _ : state) {
        state.PauseTiming();
        std::optional<Shop> shop(state.range(0));
        auto consumables = std::make_shared<ConsumablePlugin>(std::vector<std::string>{"coins", "gems"});
        auto promotion = std::make_shared<SKProductPromoPlugin>();
        promotion->didFinishLaunchingWithOptions(*UIApplication::shared(), {});
        promotion->setPayment(std::make_shared<SKPayment>(isPromoted ? "gems" : "coins"));
        run(state, *shop);
        consumables.reset();
        promotion.reset();
        shop.reset();
        state.ResumeTiming();
    }
}

void BatchFloor(benchmark::State& state) { floor(state, false); }
void Batch(benchmark::State& state) { plugins(state, false); }
void PromotedBatchFloor(benchmark::State& state) { floor(state, true); }
void PromotedBatch(benchmark::State& state) { plugins(state, true); }

BENCHMARK(BatchFloor)->Arg(10'000);
BENCHMARK(Batch)->Arg(10'000);
BENCHMARK(PromotedBatchFloor)->Arg(10'000);
BENCHMARK(PromotedBatch)->Arg(10'000);

} // namespace

BENCHMARK_MAIN();
