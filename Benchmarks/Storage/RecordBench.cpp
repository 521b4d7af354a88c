#include "Benchmarks/SilentConsole.hpp"
#include "Benchmarks/Storage/FloorCodec.hpp"
#include "Benchmarks/Storage/PlainDatabase.hpp"
#include "Benchmarks/Storage/Turns.hpp"
#include "Corvantile/Extension/AESText.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

// The road of a record: text, cipher, base64 in lines, user defaults. Each floor calls the same libraries
// directly, with everything kept that can be, and leaves out whatever a single caller could do without.

namespace {

using namespace corvantile;

const std::string key = "kT1vZ0uQmXc9Yb7w";
const std::string iv = "2uHc9ZsRwJ7pLA==";
const std::string name = "appconfig_Setting_C0FFEE00-ABCD-4EF0-8123-000000000001";
const std::string record(200, 'r');

// The framework's own codec wants a platform; this one's state is never looked at.
struct Framework {
    const Company company;
    const TemporaryFolder folder;
    DesktopPlatform platform{{.stateFolder = folder.path() / "state"}};
    FloorCodec floor{key, iv};
};

constexpr int batch = 200;

void Seal(benchmark::State& state) {
    Framework framework;
    Turns turns;
    if (aesEncrypt(record, key, iv, 1) != framework.floor.seal(record)) state.SkipWithError("They differ");
    for (auto _ : state)
        turns.take(
            state, [&] { benchmark::DoNotOptimize(framework.floor.seal(record)); },
            [&] { benchmark::DoNotOptimize(aesEncrypt(record, key, iv, 1)); }, batch);
    turns.report(state);
}

void Open(benchmark::State& state) {
    Framework framework;
    Turns turns;
    const auto sealed = framework.floor.seal(record);
    if (framework.floor.open(sealed) != record) state.SkipWithError("They differ");
    for (auto _ : state)
        turns.take(
            state, [&] { benchmark::DoNotOptimize(framework.floor.open(sealed)); },
            [&] { benchmark::DoNotOptimize(aesDecrypt(sealed, key, iv, 1)); }, batch);
    turns.report(state);
}

void Get(benchmark::State& state) {
    Framework framework;
    Turns turns;
    auto& defaults = *framework.platform.ports().userDefaults;
    std::map<std::string, std::string, std::less<>> values{{name, framework.floor.seal(record)}};
    for (int number = 0; number < 20; ++number) values["appconfig_" + std::to_string(number)] = "value";
    for (const auto& [storedKey, value] : values) defaults.setValue(value, storedKey);
    for (auto _ : state)
        turns.take(
            state, [&] { benchmark::DoNotOptimize(framework.floor.open(values.find(name)->second)); },
            [&] { benchmark::DoNotOptimize(aesDecrypt(*defaults.stringForKey(name), key, iv, 1)); }, batch);
    turns.report(state);
}

// Each text differs from the last: SQLite writes nothing for what is there already. Both logs are emptied
// between the turns.
void Set(benchmark::State& state) {
    Framework framework;
    Turns turns;
    std::function<void()> emptyLog = [] {};
    SQLiteUserDefaults defaults(
        {.file = framework.folder.path() / "defaults.sqlite",
         .console = std::make_shared<SilentConsole>(),
         .inBackground = [&](std::function<void()> work) { emptyLog = std::move(work); }});
    PlainDatabase floor(framework.folder.path() / "floor.sqlite",
                        "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                        "PRAGMA wal_autocheckpoint = 0;"
                        "CREATE TABLE defaults (key BLOB PRIMARY KEY, value) WITHOUT ROWID");
    auto* const put = floor.prepare(
        "INSERT INTO defaults VALUES (?1, ?2) ON CONFLICT DO UPDATE SET value = excluded.value");
    int number = 0;
    const auto next = [&] { return std::to_string(1'000'000 + ++number) + record.substr(7); };
    defaults.setValue("the file is open now", name);
    floor.write(put, name, "the same");
    for (auto _ : state) {
        turns.take(
            state, [&] { floor.write(put, name, framework.floor.seal(next())); },
            [&] { defaults.setValue(aesEncrypt(next(), key, iv, 1), name); }, batch);
        floor.run("PRAGMA wal_checkpoint(PASSIVE); PRAGMA user_version = 1");
        emptyLog();
    }
    turns.report(state);
}

void OpenAndReadOne(benchmark::State& state) {
    const Company company;
    const TemporaryFolder folder;
    const UserDefaultsOptions options{.file = folder.path() / "defaults.sqlite",
                                      .console = std::make_shared<SilentConsole>(),
                                      .inBackground = {}};
    {
        SQLiteUserDefaults defaults(options);
        for (int number = 0; number < 50; ++number)
            defaults.setValue(std::string(280, 'v'), std::to_string(number));
    }
    for (auto _ : state) benchmark::DoNotOptimize(SQLiteUserDefaults(options).stringForKey("7"));
}

} // namespace

BENCHMARK(Seal)->UseManualTime()->Iterations(1000);
BENCHMARK(Open)->UseManualTime()->Iterations(1000);
BENCHMARK(Get)->UseManualTime()->Iterations(1000);
BENCHMARK(Set)->UseManualTime()->Iterations(100);
BENCHMARK(OpenAndReadOne)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
