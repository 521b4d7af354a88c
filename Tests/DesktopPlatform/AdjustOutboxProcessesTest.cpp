#include "DesktopPlatform/Adjust/Outbox.hpp"
#include "DesktopPlatform/Adjust/OutboxAdjust.hpp"
#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Tests/DesktopPlatform/ChildProcess.hpp"
#include "Tests/DesktopPlatform/LoopbackServer.hpp"
#include "Tests/DesktopPlatform/StoreFiles.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <latch>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

namespace corvantile {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

// Fixed in length, so that a reader of a pipe sees which one is whole.
std::string nameOf(int round, int number) { return std::to_string(100'000'000 + round * 100'000 + number); }
constexpr std::size_t nameLength = 9;

std::vector<std::string> namesIn(const std::string& bytes) {
    std::vector<std::string> names;
    for (std::size_t at = 0; at + nameLength <= bytes.size(); at += nameLength)
        names.push_back(bytes.substr(at, nameLength));
    return names;
}

void write(int out, const std::string& name) {
    if (::write(out, name.data(), name.size()) != static_cast<ssize_t>(name.size())) ::_exit(2);
}

// One process adds and another delivers; both are killed at some moment.
TEST(OutboxProcesses, LoseAndDoubleNothingWhenTheyAreKilled) {
    const TemporaryFolder home;
    const auto file = home.path() / "state" / "outbox.sqlite";
    const auto deliver = [&](int out) {
        Outbox outbox(file, std::make_shared<ListeningConsole>(), {});
        while (true) {
            while (!outbox.claim()) std::this_thread::yield();
            const auto package = outbox.front();
            if (!package && out < 0) return;
            if (!package) continue;
            write(out, entryOf(*package).eventToken);
            outbox.record(*package, PackageState::sent, {.status = 200, .text = "{}"});
        }
    };
    const char* const asked = std::getenv("CORVANTILE_KILL_ROUNDS");
    const int rounds = asked != nullptr ? std::atoi(asked) : 100;
    std::mt19937 random(7);
    std::uniform_int_distribution<int> microseconds(0, 15'000);
    std::vector<std::string> acknowledged;
    std::vector<std::string> delivered;
    int doubled = 0;
    const auto receive = [&](const std::string& bytes) {
        for (const auto& name : namesIn(bytes)) {
            // Killed between the answer and its record: the next one sends it once more, and no other.
            const bool isAgain = !delivered.empty() && delivered.back() == name;
            doubled += isAgain ? 1 : 0;
            if (!isAgain) delivered.push_back(name);
        }
    };
    for (int round = 0; round < rounds; ++round) {
        ChildProcess adding([&](int out) {
            Outbox outbox(file, std::make_shared<ListeningConsole>(), {});
            for (int number = 0; number < 100'000; ++number) {
                OutboxPackage package;
                package.identifier = nameOf(round, number);
                package.form = "event_token=" + package.identifier;
                outbox.add(package);
                write(out, package.identifier);
            }
        });
        ChildProcess delivering(deliver);
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        delivering.kill();
        adding.kill();
        for (const auto& name : namesIn(adding.readAll())) acknowledged.push_back(name);
        receive(delivering.readAll());
    }
    Outbox rest(file, std::make_shared<ListeningConsole>(), {});
    ASSERT_TRUE(rest.claim());
    while (const auto package = rest.front()) {
        receive(entryOf(*package).eventToken);
        rest.record(*package, PackageState::sent, {.status = 200, .text = "{}"});
    }

    EXPECT_THAT(OutboxAdjust::inspect(file).setAside, IsEmpty());
    EXPECT_LE(doubled, rounds);
    EXPECT_GT(acknowledged.size(), static_cast<std::size_t>(rounds) / 2);
    // In order, each once; what was added in the moment of the kill may be there without a word.
    EXPECT_TRUE(std::is_sorted(delivered.begin(), delivered.end()));
    EXPECT_EQ(std::adjacent_find(delivered.begin(), delivered.end()), delivered.end());
    EXPECT_TRUE(std::includes(delivered.begin(), delivered.end(), acknowledged.begin(), acknowledged.end()));
    EXPECT_LE(delivered.size(), acknowledged.size() + static_cast<std::size_t>(rounds));
}

// Breaks the connection in the middle of the answer.
void breakOff(httplib::Response& response) {
    response.set_content_provider(100, "text/plain", [](auto, auto, httplib::DataSink&) { return false; });
}

TEST(OutboxOverTheNetwork, ArrivesInOrderWhateverTheServerDoes) {
    std::mutex mutex;
    std::vector<std::string> arrived;
    std::latch mayAnswer(1);
    const LoopbackServer server([&](const httplib::Request& request, httplib::Response& response) {
        mayAnswer.wait();
        const std::lock_guard lock(mutex);
        arrived.push_back(request.path + " " + request.get_param_value("event_token") + " " +
                          request.get_param_value("revenue") + request.get_param_value("currency"));
        response.set_header("X-Seen", request.get_header_value("Authorization"));
        switch (arrived.size()) {
        case 1: return response.set_content("{}", "application/json");
        case 2: return void(response.status = 500);
        case 3: return breakOff(response);
        case 4: response.status = 400; return response.set_content(R"({"error":"no"})", "application/json");
        default: return response.set_content("{}", "application/json");
        }
    });
    const TemporaryFolder home;
    DesktopPlatform platform({.stateFolder = home.path() / "state",
                              .console = std::make_shared<ListeningConsole>(),
                              .adjust = {.endpoint = "http://" + server.address(), .bearerToken = "secret"}});
    auto& adjust = platform.adjust();
    adjust.launch(adjust.makeConfig("abcdefghijkl", ADJEnvironmentSandbox));
    ADJEvent first("größe+1");
    first.setRevenue(1.5, "EUR");
    adjust.send(first); // while the server still hangs
    adjust.send(ADJEvent("second"));
    mayAnswer.count_down();
    const auto tries = [&] {
        int all = 0;
        for (const auto& package : adjust.packages()) all += package.tries;
        return all;
    };
    for (int failed = 2; failed <= 3; ++failed) {
        ASSERT_TRUE(platform.runMainLoopUntil([&] { return tries() >= failed; }, 20s));
        adjust.setOnline(false); // and on again: the wait is over
        adjust.setOnline(true);
    }
    ASSERT_TRUE(platform.runMainLoopUntil(
        [&] { return adjust.packages().back().state != PackageState::waiting; }, 20s));

    const std::lock_guard lock(mutex);
    const auto again = "/event größe+1 1.50000EUR";
    EXPECT_THAT(arrived, ElementsAre("/session  ", again, again, again, "/event second "));
    EXPECT_EQ(adjust.packages()[1].state, PackageState::refused);
    EXPECT_EQ(adjust.packages()[1].lastAnswer->text, R"({"error":"no"})");
}

} // namespace
} // namespace corvantile
