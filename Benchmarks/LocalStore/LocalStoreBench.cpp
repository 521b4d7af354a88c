// The local store: reading a catalogue, against the JSON library's parse of the same bytes, and days of daily
// renewals, whose time per renewal says whether it stays linear.
#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"
#include "CorvantileLocalStore/Engine/StoreStorage.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <memory>
#include <string>

namespace {

using namespace corvantile;

std::string catalogueText() {
    std::string text =
        R"({"version": {"major": 4, "minor": 0}, "settings": {"_storefront": "USA"}, "products": [)";
    for (int i = 0; i < 1000; ++i) {
        const auto number = std::to_string(i);
        text += i == 0 ? "" : ",";
        text +=
            R"({"displayPrice": "1.99", "familyShareable": false, "internalID": "A1B2C3D4", "localizations": [)"
            R"({"description": "A thing to buy", "displayName": "Thing )" +
            number + R"(", "locale": "en_US"}], "productID": "com.example.app.product)" + number +
            R"(", "referenceName": "Thing", "type": "Consumable"})";
    }
    return text + "]}";
}

void CatalogueFloor(benchmark::State& state) {
    const auto text = catalogueText();
    for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(text));
}
BENCHMARK(CatalogueFloor);

void CatalogueRead(benchmark::State& state) {
    const auto text = catalogueText();
    for (auto _ : state) benchmark::DoNotOptimize(readCatalogue(text, "catalogue"));
}
BENCHMARK(CatalogueRead);

class StandingClock final : public Clock {
public:
    [[nodiscard]] Date now() const override { return Date::fromUnixSeconds(1.7e9); }
    [[nodiscard]] std::chrono::seconds localOffset(Date) const override { return {}; }
};

// Each day is a jump of its own, and is written down.
void DailyRenewals(benchmark::State& state) {
    const auto days = state.range(0);
    const auto count = state.range(1);
    Catalogue catalogue;
    for (std::int64_t i = 0; i < count; ++i)
        catalogue.add({.identifier = std::to_string(i),
                       .kind = ProductKind::autoRenewing,
                       .groupIdentifier = std::to_string(i),
                       .period = {1, PeriodUnit::day}});
    for (auto _ : state) {
        LocalStore store({.catalogue = catalogue,
                          .clock = std::make_shared<StandingClock>(),
                          .storage = std::make_shared<InMemoryStoreStorage>()});
        for (const auto& product : catalogue.products()) store.buyElsewhere(product.identifier);
        for (std::int64_t day = 0; day < days; ++day) store.advance(std::chrono::hours(24));
    }
    state.counters["perRenewal"] =
        benchmark::Counter(static_cast<double>(days * count),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(DailyRenewals)->ArgsProduct({{91, 182, 365}, {100}})->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
