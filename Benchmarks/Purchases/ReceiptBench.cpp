// Reading the store's receipt JSON. The floor is the JSON library's plain parse of the same bytes.
#include "../Company.hpp"

#include "CorvantileIAP/StoreReceipt.hpp"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>

namespace {

using namespace corvantile;

std::string dates(const char* key, std::int64_t seconds) {
    const std::string name(key);
    return '"' + name + R"(": "2020-11-08 16:00:57 Etc/GMT", ")" + name + R"(_ms": ")" +
           std::to_string(seconds) + R"(000", ")" + name +
           R"(_pst": "2020-11-08 08:00:57 America/Los_Angeles", )";
}

// As the store writes it, all text.
std::string receipt(std::int64_t rows) {
    std::string text = R"({"environment": "Production", "status": 0, "latest_receipt_info": [)";
    for (std::int64_t row = 0; row < rows; ++row) {
        text += row == 0 ? "{" : ", {";
        text += R"("quantity": "1", "product_id": "com.example.app.pro.month", "transaction_id": ")" +
                std::to_string(100000074000000 + row * 7919 % rows) +
                R"(", "original_transaction_id": "100000074000000", )" +
                dates("purchase_date", 1604851257 + row) + dates("original_purchase_date", 1604851258) +
                dates("expires_date", 1607443257 + row) + R"("web_order_line_item_id": "1000000056)" +
                std::to_string(row) +
                R"(", "is_trial_period": "false", "is_in_intro_offer_period": "false",
                   "in_app_ownership_type": "PURCHASED", "subscription_group_identifier": "20600000"})";
    }
    return text + R"(], "pending_renewal_info": []})";
}

void PlainParse(benchmark::State& state) {
    const Company company;
    const auto text = receipt(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(text));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ReadReceipt(benchmark::State& state) {
    const Company company;
    const auto text = receipt(state.range(0));
    if (readStoreReceipt(text).transactions.size() != static_cast<std::size_t>(state.range(0)))
        state.SkipWithError("rows are missing");
    for (auto _ : state) benchmark::DoNotOptimize(readStoreReceipt(text));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(PlainParse)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadReceipt)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
