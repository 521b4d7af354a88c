#include "DesktopPlatform/Adjust/Outbox.hpp"
#include "Tests/DesktopPlatform/AdjustOutboxFixture.hpp"
#include "Tests/DesktopPlatform/ChildProcess.hpp"
#include "Tests/DesktopPlatform/StoreFiles.hpp"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>

#include <unistd.h>

namespace corvantile {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// Fixed in length, so that a reader of a pipe sees which one is whole.
std::string nameOf(int round, int number) { return std::to_string(100'000'000 + round * 100'000 + number); }

void appendNames(std::vector<std::string>& names, const std::string& bytes) {
    constexpr std::size_t length = 9;
    for (std::size_t at = 0; at + length <= bytes.size(); at += length)
        names.push_back(bytes.substr(at, length));
}

void write(int out, const std::string& name) {
    if (::write(out, name.data(), name.size()) != static_cast<ssize_t>(name.size())) ::_exit(2);
}

// One process adds and another delivers; both are killed at some moment.
TEST_F(AdjustOutbox, LosesAndDoublesNothingWhenItsProcessesAreKilled) {
    const auto open = [&] { return Outbox(file, std::make_shared<ListeningConsole>(), {}); };
    const auto add = [&](int round, int out) {
        auto outbox = open();
        for (int number = 0; number < 100'000; ++number) {
            OutboxPackage package;
            package.identifier = nameOf(round, number);
            package.form = "event_token=token1";
            outbox.add(package);
            write(out, package.identifier);
        }
    };
    const auto deliverNext = [](Outbox& outbox, const auto& send) {
        const auto package = outbox.claim() ? outbox.front() : std::nullopt;
        if (!package) return false;
        send(package->identifier);
        outbox.record(*package, PackageState::sent, {.status = 200, .text = "{}"});
        return true;
    };
    const char* const asked = std::getenv("CORVANTILE_KILL_ROUNDS");
    const int rounds = asked != nullptr ? std::atoi(asked) : 100;
    std::mt19937 random(7);
    std::uniform_int_distribution<int> microseconds(0, 15'000);
    std::vector<std::string> acknowledged, delivered;
    for (int round = 0; round < rounds; ++round) {
        ChildProcess adding([&](int out) { add(round, out); });
        ChildProcess delivering([&](int out) {
            for (auto outbox = open();;) deliverNext(outbox, [&](const auto& name) { write(out, name); });
        });
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        delivering.kill();
        adding.kill();
        appendNames(acknowledged, adding.readAll());
        appendNames(delivered, delivering.readAll());
    }
    auto rest = open();
    while (deliverNext(rest, [&](const auto& name) { delivered.push_back(name); })) {
    }

    EXPECT_THAT(OutboxAdjust::inspect(file).setAside, IsEmpty());
    EXPECT_GT(acknowledged.size(), static_cast<std::size_t>(rounds) / 2);
    // Killed between the answer and its record: the next one sends it once more, and no other.
    const auto again = std::unique(delivered.begin(), delivered.end());
    EXPECT_LE(delivered.end() - again, rounds);
    delivered.erase(again, delivered.end());
    // In order; what was added in the moment of the kill may be there without a word.
    EXPECT_TRUE(std::is_sorted(delivered.begin(), delivered.end()));
    EXPECT_TRUE(std::includes(delivered.begin(), delivered.end(), acknowledged.begin(), acknowledged.end()));
    EXPECT_LE(delivered.size(), acknowledged.size() + static_cast<std::size_t>(rounds));
}

TEST_F(AdjustOutbox, RemembersTransactionsAttributionAndPushTokenInTheNextProcess) {
    platform->http().answer(server, {.status = 200, .body = R"({"adid":"A","attribution":{"network":"N"}})"});
    auto adjust = launch();
    adjust->setPushToken({0xAB});
    const auto sendTransaction = [&](int number) {
        ADJEvent event("token1");
        event.setTransactionId("T" + std::to_string(number));
        adjust->send(event);
    };
    for (int number = 0; number < 11; ++number) sendTransaction(number);
    platform->runUntilIdle();
    adjust = launch();
    platform->console().clear();
    sendTransaction(1);
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("'T1' has been sent before")));
    sendTransaction(0); // eleven transactions ago
    EXPECT_THAT(lines(), SizeIs(1));
    platform->runUntilIdle();

    EXPECT_THAT(posted(), SizeIs(13));
    EXPECT_THAT(*platform->http().sent().back().request.body, HasSubstr("&push_token=ab&"));
    EXPECT_EQ(std::count(delegate->heard.begin(), delegate->heard.end(), "attribution N A"), 1);
}

TEST_F(AdjustOutbox, HasItsLogEmptiedWhateverMadeItLong) {
    const auto adjust = launch({});
    for (int number = 0; number < 400; ++number) {
        ADJEvent event("token1");
        event.setTransactionId(std::to_string(number));
        adjust->send(event);
        platform->runUntilIdle();
    }
    EXPECT_LT(std::filesystem::file_size(beside(file, "-wal")), 300 * 4096);
}

TEST_F(AdjustOutbox, LetsOneProcessDeliverAtATime) {
    const auto first = launch();
    platform->runUntilIdle();
    platform->http().hang(server);
    first->send(ADJEvent("token1"));
    platform->runUntilIdle();
    auto second = launch();
    second->send(ADJEvent("token2"));
    platform->advance(10s);
    EXPECT_THAT(posted(), ElementsAre("/session ", "/event token1"));

    platform->http().answer(server, {.status = 200, .body = "{}"});
    platform->advance(10min);

    EXPECT_THAT(posted(2), ElementsAre("/event token1", "/event token2"));
    for (const auto& package : second->packages()) EXPECT_EQ(package.state, PackageState::sent);
}

TEST_F(AdjustOutbox, GoesOnWithoutAFileThatCanBeUsed) {
    writeFile(file, "no outbox");
    auto adjust = launch({});
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("was set aside as outbox.sqlite.set-aside-1")));
    EXPECT_THAT(OutboxAdjust::inspect(file).packages, SizeIs(1));

    writeFile(home.path() / "blocked", "no folder");
    for (const auto& path : {home.path() / "blocked" / "outbox.sqlite", std::filesystem::path()}) {
        file = path;
        platform->console().clear();
        adjust = launch();
        adjust->send(ADJEvent("token1"));
        adjust->send(ADJEvent("token2"));
        EXPECT_THAT(lines(), SizeIs(path.empty() ? 0 : 1));
        platform->runUntilIdle();
        EXPECT_EQ(posted().back(), "/event token2");
        EXPECT_EQ(adjust->packages().back().state, PackageState::sent);
    }
}

TEST_F(AdjustOutbox, KeepsInMemoryWhatAFullDiskDoesNotTake) {
    auto adjust = launch();
    {
        const SmallDisk full(std::filesystem::file_size(beside(file, "-wal")));
        adjust->send(ADJEvent("token1"));
        adjust->send(ADJEvent("token2"));
        platform->runUntilIdle();
        adjust->send(ADJEvent("token3"));
    }
    EXPECT_THAT(posted(), ElementsAre("/session ", "/event token1", "/event token2"));
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("They stay in memory until they can be.")));
    adjust.reset();
    EXPECT_THAT(lines(), SizeIs(2));
    const auto kept = OutboxAdjust::inspect(file).packages;
    const std::string tokens[] = {"", "token1", "token2", "token3"};
    ASSERT_THAT(kept, SizeIs(std::size(tokens)));
    for (std::size_t i = 0; i < kept.size(); ++i) {
        EXPECT_EQ(kept[i].eventToken, tokens[i]);
        EXPECT_EQ(kept[i].state, i < 3 ? PackageState::sent : PackageState::waiting);
    }
}

TEST_F(AdjustOutbox, ForgetsNothingOverALaunchThatCannotReadItsFile) {
    const auto state = home.path() / "state", away = home.path() / "away";
    file = state / "outbox.sqlite";
    std::unique_ptr<OutboxAdjust> adjust;
    const auto launchAndSend = [&](const char* transaction) {
        platform->advance(1h);
        adjust = launch();
        ADJEvent event("token1");
        event.setTransactionId(transaction);
        adjust->send(event);
        platform->runUntilIdle();
    };
    launchAndSend("T1");
    launchAndSend("T2");
    adjust.reset();
    std::filesystem::rename(state, away);
    std::ofstream(state) << "no folder";
    launchAndSend("T3");
    std::filesystem::remove(state);
    std::filesystem::rename(away, state);
    adjust.reset();
    platform->console().clear();

    launchAndSend("T1");
    EXPECT_THAT(*platform->http().sent().back().request.body, HasSubstr("session_count=3&"));
    launchAndSend("T3");
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("'T1' has been sent"), HasSubstr("'T3' has been sent")));
}

} // namespace
} // namespace corvantile
