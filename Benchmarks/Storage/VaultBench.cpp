#include "Benchmarks/Storage/PlainDatabase.hpp"
#include "Benchmarks/Storage/Turns.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

// The floor is what SQLite itself takes to write or read one row durably in the same folder: a prepared
// statement on a table with one key and one value. Set TMPDIR to measure another disk.

namespace {

using namespace corvantile;

constexpr const char* service = "com.example.app";
constexpr std::size_t valueSize = 160; // about what a sealed marker takes

class PlainStore {
public:
    explicit PlainStore(const std::filesystem::path& file)
        : database_(file,
                    "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
                    "CREATE TABLE IF NOT EXISTS entries (key BLOB PRIMARY KEY, value BLOB) WITHOUT ROWID") {}

    void run(const char* statements) { database_.run(statements); }
    void put(const std::string& key, const std::string& value) { database_.write(put_, key, value); }
    std::string get(const std::string& key) { return database_.read(get_, key); }

private:
    PlainDatabase database_;
    const PlainDatabase::Statement put_ = database_.prepare(
        "INSERT INTO entries VALUES (?1, ?2) ON CONFLICT DO UPDATE SET value = excluded.value");
    const PlainDatabase::Statement get_ = database_.prepare("SELECT value FROM entries WHERE key = ?1");
};

void SaveInTurns(benchmark::State& state) {
    const Company company;
    const TemporaryFolder folder;
    Vault vault({.folder = folder.path() / "keychain"});
    PlainStore plain(folder.path() / "plain.sqlite");
    const std::string value(valueSize, 'v');
    vault.save({{"first", true}}, "first", service);
    plain.put("first", value);
    Turns turns;
    int number = 0;
    for (auto _ : state) {
        const auto account = std::to_string(1'000'000 + number++);
        const KeychainDictionary marker = {{account, true}};
        turns.take(
            state, [&] { plain.put(account, value); }, [&] { vault.save(marker, account, service); }, 1,
            number % 2 != 0);
    }
    turns.report(state);
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
    Turns turns;
    for (auto _ : state) {
        turns.take(
            state,
            [&] {
                for (int number = 0; number < count; ++number)
                    benchmark::DoNotOptimize(plain.get(std::to_string(number)));
            },
            [&] {
                for (int number = 0; number < count; ++number)
                    benchmark::DoNotOptimize(vault.load(std::to_string(number / 10 * 10), service));
            });
    }
    turns.report(state);
}

void OpenAndLoad(benchmark::State& state) {
    const Company company;
    const TemporaryFolder folder;
    Vault({.folder = folder.path() / "keychain"}).save({{"key", "text"}}, "account", service);
    PlainStore(folder.path() / "plain.sqlite").put("account", std::string(valueSize, 'v'));
    Turns turns;
    for (auto _ : state) {
        turns.take(
            state,
            [&] { benchmark::DoNotOptimize(PlainStore(folder.path() / "plain.sqlite").get("account")); },
            [&] {
                const Vault vault({.folder = folder.path() / "keychain"});
                benchmark::DoNotOptimize(vault.load("account", service));
            });
    }
    turns.report(state);
}

} // namespace

BENCHMARK(SaveInTurns)->UseManualTime()->Iterations(400)->Unit(benchmark::kMicrosecond);
BENCHMARK(LoadInTurns)->UseManualTime()->Iterations(11)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenAndLoad)->UseManualTime()->Iterations(200)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
