#include "Benchmarks/SilentConsole.hpp"
#include "Benchmarks/Storage/PlainDatabase.hpp"
#include "Benchmarks/Storage/Turns.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/Adjust/detail/OutboxFile.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

// An event's way from the router into the outbox. The floor inserts a package of the same size into the same
// kind of file. They take turns, and the logs are emptied in between.

namespace {

using namespace corvantile;

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
    PlainDatabase floor(folder.path() / "floor.sqlite",
                        "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                        "PRAGMA wal_autocheckpoint = 0");
    floor.run(OutboxFile::format.tables);
    auto* const add = floor.prepare("INSERT INTO packages (identifier, kind, form) VALUES (?1, 'event', ?2)");
    const auto insert = [&] { floor.write(add, package.identifier, package.form); };
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
