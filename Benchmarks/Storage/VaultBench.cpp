#include "Benchmarks/Storage/Turns.hpp"
#include "DesktopPlatform/Keychain/Vault.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include <sqlite3.h>

// The floor is what SQLite itself takes to write or read one row durably in the same folder: a prepared
// statement on a table with one key and one value. Set TMPDIR to measure another disk.

namespace {

using namespace corvantile;

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
