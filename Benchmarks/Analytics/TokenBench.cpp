// Event tokens: finding one, against a plain table, and loading their file, against the JSON library's parse
// of the same bytes.
#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/TestPlatform.hpp"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

using namespace corvantile;

std::string name(std::size_t row) { return "event_of_the_game_" + std::to_string(row); }
std::string token(std::size_t row) { return "tk" + std::to_string(100000 + row); }

std::string file(std::size_t rows) {
    std::string json = "[\n";
    for (std::size_t row = 0; row < rows; ++row)
        json += R"(  {"token": ")" + token(row) + R"(", "name": ")" + name(row) + "\"},\n";
    json.replace(json.size() - 2, 2, "\n]");
    return json;
}

// Names in an order of their own, so that neither side profits from the order of filling.
std::vector<std::string> wanted(std::size_t rows) {
    std::vector<std::string> names;
    names.reserve(rows);
    for (std::size_t i = 0; i < rows; ++i) names.push_back(name(i * 7919 % rows));
    return names;
}

template <class Table>
void find(benchmark::State& state, const Table& table) {
    const auto names = wanted(table.size());
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(table.find(names[next]));
        next = next + 1 == names.size() ? 0 : next + 1;
    }
}

void FindFloor(benchmark::State& state) {
    std::unordered_map<std::string, std::string> table;
    const auto rows = static_cast<std::size_t>(state.range(0));
    for (std::size_t row = 0; row < rows; ++row) table.emplace(name(row), token(row));
    find(state, table);
}

void Find(benchmark::State& state) {
    TestDevice device;
    const auto platform = TestPlatform::launch(
        device, {.resources = {{"events.json", file(static_cast<std::size_t>(state.range(0)))}}});
    const AdjustAnalyticComponent component("events");
    find(state, component.events());
}

void LoadFloor(benchmark::State& state) {
    const auto json = file(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(json));
}

void Load(benchmark::State& state) {
    TestDevice device;
    const auto platform = TestPlatform::launch(
        device, {.resources = {{"events.json", file(static_cast<std::size_t>(state.range(0)))}}});
    for (auto _ : state) benchmark::DoNotOptimize(AdjustAnalyticComponent("events").events().size());
}

BENCHMARK(FindFloor)->Arg(10'000);
BENCHMARK(Find)->Arg(10'000);
BENCHMARK(LoadFloor)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(Load)->Arg(100'000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
