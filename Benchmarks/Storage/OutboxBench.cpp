#include "Benchmarks/Storage/Turns.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "DesktopPlatform/Adjust/OutboxAdjust.hpp"
#include "DesktopPlatform/Adjust/OutboxFile.hpp"
#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Platform/Foundation/Console.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sqlite3.h>

// An event's way from the router into the outbox. The floor inserts a package of the same size into the same
// kind of file. They take turns, and the logs are emptied in between.

namespace {

using namespace corvantile;

class SilentConsole final : public Console {
public:
    void print(std::string_view) override {}
};

class FloorOutbox {
public:
    explicit FloorOutbox(const std::filesystem::path& file) {
        if (sqlite3_open(file.c_str(), &database_) != SQLITE_OK) throw std::runtime_error("No database");
        run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 0");
        run(OutboxFile::format.tables);
        sqlite3_prepare_v2(database_,
                           "INSERT INTO packages (identifier, kind, form) VALUES (?1, 'event', ?2)", -1,
                           &add_, nullptr);
    }
    FloorOutbox(const FloorOutbox&) = delete;
    FloorOutbox& operator=(const FloorOutbox&) = delete;
    ~FloorOutbox() {
        sqlite3_finalize(add_);
        sqlite3_close(database_);
    }

    void run(const char* statements) { sqlite3_exec(database_, statements, nullptr, nullptr, nullptr); }
    void add(std::string_view identifier, std::string_view form) {
        sqlite3_bind_blob(add_, 1, identifier.data(), static_cast<int>(identifier.size()), SQLITE_STATIC);
        sqlite3_bind_blob(add_, 2, form.data(), static_cast<int>(form.size()), SQLITE_STATIC);
        if (sqlite3_step(add_) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database_));
        sqlite3_reset(add_);
    }

private:
    sqlite3* database_ = nullptr;
    sqlite3_stmt* add_ = nullptr;
};

void TrackIntoOutbox(benchmark::State& state, ADJLogLevel level) {
    constexpr int batch = 150; // a log that grows longer is emptied in the background
    const TemporaryFolder folder;
    const auto file = folder.path() / "state" / "outbox.sqlite";
    DesktopPlatform platform(
        {.stateFolder = file.parent_path(), .console = std::make_shared<SilentConsole>()});
    const auto config = platform.adjust().makeConfig("abcdefghijkl", ADJEnvironmentProduction);
    config->setLogLevel(level);
    platform.adjust().launch(config);
    const auto router = std::make_shared<AnalyticPlugin>();
    router->registerComponents({std::make_shared<AdjustAnalyticComponent>(
        AdjustAnalyticComponent::EventTokens{{"level_up", "abc123"}})});
    const auto track = [&] {
        router->track(AnalyticEvent("level_up", {{"level", "three"}, {"player", "Ada"}}));
    };
    track();
    const auto package = *OutboxFile(openState(file, OutboxFile::format)).newest();
    FloorOutbox floor(folder.path() / "floor.sqlite");
    const auto insert = [&] { floor.add(package.identifier, package.form); };
    insert();
    Turns turns;
    for (auto _ : state) {
        turns.take(state, insert, track, batch);
        floor.run("PRAGMA wal_checkpoint(PASSIVE); PRAGMA user_version = 1");
        emptyStateLog(file, OutboxFile::format);
    }
    turns.report(state);
}

BENCHMARK_CAPTURE(TrackIntoOutbox, Quiet, ADJLogLevel::info)->UseManualTime()->Iterations(200);
BENCHMARK_CAPTURE(TrackIntoOutbox, Verbose, ADJLogLevel::verbose)->UseManualTime()->Iterations(200);

} // namespace

BENCHMARK_MAIN();
