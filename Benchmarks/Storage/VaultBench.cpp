#include "DesktopPlatform/Keychain/Vault.hpp"
#include "Tests/DesktopPlatform/FlushCount.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <sqlite3.h>

// The floor is what SQLite itself takes to write or read one row durably in the same folder: a prepared
// statement on a table with one key and one value. Floor and vault take turns, since what a flush costs
// swings from second to second; set TMPDIR to measure another disk.

namespace {

using namespace corvantile;
using Clock = std::chrono::steady_clock;

constexpr const char* service = "com.example.app";
constexpr std::size_t valueSize = 160; // about what a sealed marker takes

class PlainStore {
public:
    explicit PlainStore(const std::filesystem::path& file) {
        if (sqlite3_open(file.c_str(), &database_) != SQLITE_OK) throw std::runtime_error("No database");
        run("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
            "CREATE TABLE IF NOT EXISTS entries (key BLOB PRIMARY KEY, value BLOB) WITHOUT ROWID");
        put_ =
            prepared("INSERT INTO entries VALUES (?1, ?2) ON CONFLICT DO UPDATE SET value = excluded.value");
        get_ = prepared("SELECT value FROM entries WHERE key = ?1");
    }
    PlainStore(const PlainStore&) = delete;
    PlainStore& operator=(const PlainStore&) = delete;
    ~PlainStore() {
        sqlite3_finalize(put_);
        sqlite3_finalize(get_);
        sqlite3_close(database_);
    }

    void run(const char* statements) { sqlite3_exec(database_, statements, nullptr, nullptr, nullptr); }
    void put(const std::string& key, const std::string& value) {
        bind(put_, 1, key);
        bind(put_, 2, value);
        if (sqlite3_step(put_) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database_));
        sqlite3_reset(put_);
    }
    std::string get(const std::string& key) {
        bind(get_, 1, key);
        std::string value;
        if (sqlite3_step(get_) == SQLITE_ROW)
            value.assign(static_cast<const char*>(sqlite3_column_blob(get_, 0)),
                         static_cast<std::size_t>(sqlite3_column_bytes(get_, 0)));
        sqlite3_reset(get_);
        return value;
    }

private:
    sqlite3_stmt* prepared(const char* text) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database_, text, -1, &statement, nullptr);
        return statement;
    }
    static void bind(sqlite3_stmt* statement, int place, const std::string& bytes) {
        sqlite3_bind_blob(statement, place, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
    }

    sqlite3* database_ = nullptr;
    sqlite3_stmt* put_ = nullptr;
    sqlite3_stmt* get_ = nullptr;
};

// A second thread that sleeps: with one alone the C++ library leaves out locked instructions.
class Company {
public:
    ~Company() {
        done_.store(true);
        done_.notify_all();
        thread_.join();
    }

private:
    std::atomic<bool> done_{false};
    std::thread thread_{[this] { done_.wait(false); }};
};

struct Measured {
    std::vector<double> times; // seconds
    int flushes = 0;

    template <class Work>
    void take(Work work) {
        const int before = flushCount();
        const auto start = Clock::now();
        work();
        times.push_back(std::chrono::duration<double>(Clock::now() - start).count());
        flushes += flushCount() - before;
    }
    [[nodiscard]] double median() {
        std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                         times.end());
        return times[times.size() / 2];
    }
    [[nodiscard]] double flushesEach() const { return flushes / static_cast<double>(times.size()); }
};

void report(benchmark::State& state, Measured& floor, Measured& vault) {
    state.counters["floor_us"] = floor.median() * 1e6;
    state.counters["vault_us"] = vault.median() * 1e6;
    state.counters["ratio"] = vault.median() / floor.median();
    state.counters["floor_flushes"] = floor.flushesEach();
    state.counters["vault_flushes"] = vault.flushesEach();
}

void SaveInTurns(benchmark::State& state) {
    const Company company;
    const TemporaryFolder folder;
    Vault vault({.folder = folder.path() / "keychain"});
    PlainStore plain(folder.path() / "plain.sqlite");
    const std::string value(valueSize, 'v');
    vault.save({{"first", true}}, "first", service);
    plain.put("first", value);
    Measured floor;
    Measured ours;
    int number = 0;
    for (auto _ : state) {
        const auto account = std::to_string(1'000'000 + number++);
        const KeychainDictionary marker = {{account, true}};
        // Whoever comes second may find the disk warm.
        if (number % 2 == 0) floor.take([&] { plain.put(account, value); });
        ours.take([&] { vault.save(marker, account, service); });
        if (number % 2 != 0) floor.take([&] { plain.put(account, value); });
        state.SetIterationTime(ours.times.back());
    }
    report(state, floor, ours);
}

void LoadInTurns(benchmark::State& state) {
    constexpr int count = 10'000;
    const Company company;
    const TemporaryFolder folder;
    Vault vault({.folder = folder.path() / "keychain"});
    PlainStore plain(folder.path() / "plain.sqlite");
    plain.run("BEGIN");
    for (int number = 0; number < count; ++number)
        plain.put(std::to_string(number), std::string(valueSize, 'v'));
    plain.run("COMMIT");
    for (int number = 0; number < count; number += 10)
        vault.save({{std::to_string(number), true}}, std::to_string(number), service);
    Measured floor;
    Measured ours;
    for (auto _ : state) {
        floor.take([&] {
            for (int number = 0; number < count; ++number)
                benchmark::DoNotOptimize(plain.get(std::to_string(number)));
        });
        ours.take([&] {
            for (int number = 0; number < count; ++number)
                benchmark::DoNotOptimize(vault.load(std::to_string(number / 10 * 10), service));
        });
        state.SetIterationTime(ours.times.back());
    }
    report(state, floor, ours);
}

void OpenAndLoad(benchmark::State& state) {
    const Company company;
    const TemporaryFolder folder;
    Vault({.folder = folder.path() / "keychain"}).save({{"key", "text"}}, "account", service);
    PlainStore(folder.path() / "plain.sqlite").put("account", std::string(valueSize, 'v'));
    Measured floor;
    Measured ours;
    for (auto _ : state) {
        floor.take(
            [&] { benchmark::DoNotOptimize(PlainStore(folder.path() / "plain.sqlite").get("account")); });
        ours.take([&] {
            const Vault vault({.folder = folder.path() / "keychain"});
            benchmark::DoNotOptimize(vault.load("account", service));
        });
        state.SetIterationTime(ours.times.back());
    }
    report(state, floor, ours);
}

} // namespace

BENCHMARK(SaveInTurns)->UseManualTime()->Iterations(400)->Unit(benchmark::kMicrosecond);
BENCHMARK(LoadInTurns)->UseManualTime()->Iterations(11)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenAndLoad)->UseManualTime()->Iterations(200)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
