// A cold start of a whole host on what an earlier launch has left, from the platform's construction until its
// records are loaded, without the second that it waits by design. The floor opens two of its files, reads
// all of both, and reads the storage key from the vault.
#include "Benchmarks/Host/WholeHost.hpp"
#include "Benchmarks/SilentConsole.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlay/detail/Proof/WriteSteps.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <vector>

#include <sqlite3.h>

namespace {

using namespace corvantile;
using Seconds = std::chrono::duration<double>;

constexpr int atOnce = 1'000'000'000; // times as early: nothing hides behind a wait
constexpr const char* bundle = "com.example.bench";

class FloorFile {
public:
    FloorFile(const std::filesystem::path& file, const char* query) {
        if (sqlite3_open(file.c_str(), &database_) != SQLITE_OK ||
            sqlite3_exec(database_, "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr) != SQLITE_OK ||
            sqlite3_prepare_v2(database_, query, -1, &statement_, nullptr) != SQLITE_OK)
            throw std::runtime_error("No database");
        while (sqlite3_step(statement_) == SQLITE_ROW)
            benchmark::DoNotOptimize(sqlite3_column_blob(statement_, 0));
    }
    FloorFile(const FloorFile&) = delete;
    FloorFile& operator=(const FloorFile&) = delete;
    ~FloorFile() {
        sqlite3_finalize(statement_);
        sqlite3_close(database_);
    }

private:
    sqlite3* database_ = nullptr;
    sqlite3_stmt* statement_ = nullptr;
};

// Closing is not counted, on either side.
Seconds openFiles(const std::filesystem::path& state) {
    const auto begin = std::chrono::steady_clock::now();
    const FloorFile defaults(state / "user-defaults.sqlite", "SELECT key, value FROM defaults");
    const FloorFile outbox(state / "outbox.sqlite", "SELECT identifier, form FROM packages");
    const Vault vault({.folder = state / "keychain"});
    if (!vault.load("realm_encryption_key", bundle)) throw std::runtime_error("No storage key");
    return std::chrono::steady_clock::now() - begin;
}

Seconds start(const std::filesystem::path& state) {
    const auto begin = std::chrono::steady_clock::now();
    DesktopPlatform platform({.bundleIdentifier = bundle,
                              .stateFolder = state,
                              .console = std::make_shared<SilentConsole>(),
                              .adjust = {.isOffline = true},
                              .decorate = [](Ports& ports) { tool::speedUpTimers(ports, atOnce); }});
    const WholeHost host(
        std::make_shared<AdjustAnalyticComponent>(AdjustAnalyticComponent::EventTokens{{"open", "abc123"}}),
        {"pro"});
    if (!platform.runMainLoopUntil([&] { return host.isLoaded(); }, std::chrono::seconds(10)))
        throw std::runtime_error("It does not load");
    return std::chrono::steady_clock::now() - begin;
}

double median(std::vector<double> times) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

void ColdStart(benchmark::State& state) {
    const TemporaryFolder folder;
    const auto home = folder.path() / "state";
    start(home);
    std::vector<double> floor;
    std::vector<double> ours;
    for (auto _ : state) {
        floor.push_back(openFiles(home).count());
        ours.push_back(start(home).count());
        state.SetIterationTime(ours.back());
    }
    state.counters["floor_us"] = 1e6 * median(floor);
    state.counters["ours_us"] = 1e6 * median(ours);
    state.counters["ratio"] = median(ours) / median(floor);
}

BENCHMARK(ColdStart)->UseManualTime()->Iterations(101)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
