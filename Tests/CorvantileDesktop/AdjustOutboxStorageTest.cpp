#include "CorvantileDesktop/Adjust/detail/Outbox.hpp"
#include "Tests/CorvantileDesktop/AdjustOutboxFixture.hpp"
#include "Tests/CorvantileDesktop/ChildProcess.hpp"
#include "Tests/CorvantileDesktop/StoreFiles.hpp"

#include <algorithm>

namespace corvantile::AdjustOutboxStorageTest {

using namespace std::chrono_literals;

// Killed between the answer and its record, a package is sent once more, and no other is.
TEST_F(AdjustOutbox, SendsEachPackageInOrderWhoeverIsKilledWhileDelivering) {
    constexpr std::size_t count = 3000, rounds = 20, nameLength = 4;
    const auto open = [&] { return Outbox(file, std::make_shared<ListeningConsole>(), {}); };
    const auto deliver = [&](const auto& send) {
        auto outbox = open();
        while (const auto package = outbox.claim() ? outbox.front() : std::nullopt) {
            send(package->identifier);
            outbox.record(*package, PackageState::sent, {.status = 200, .text = "{}"});
        }
    };
    std::vector<std::string> names;
    for (auto outbox = open(); names.size() < count;) {
        OutboxPackage package;
        package.identifier = names.emplace_back(std::to_string(1000 + names.size()));
        package.form = "event_token=token1";
        outbox.add(package);
    }
    std::string sent;
    for (std::size_t round = 1; round <= rounds; ++round) {
        ChildProcess delivering([&](int out) {
            deliver([out](const auto& name) {
                if (::write(out, name.data(), nameLength) != nameLength) ::_exit(2);
            });
        });
        sent += delivering.read(nameLength * round);
        delivering.kill();
        sent += delivering.readAll();
    }
    deliver([&](const auto& name) { sent += name; });

    std::vector<std::string> delivered;
    for (std::size_t at = 0; at < sent.size(); at += nameLength)
        delivered.push_back(sent.substr(at, nameLength));
    EXPECT_LE(delivered.size(), count + rounds);
    delivered.erase(std::unique(delivered.begin(), delivered.end()), delivered.end());
    EXPECT_EQ(delivered, names);
}

TEST_F(AdjustOutbox, RemembersTransactionsAttributionAndPushTokenInTheNextProcess) {
    platform_->http().answer(server,
                             {.status = 200, .body = R"({"adid":"A","attribution":{"network":"N"}})"});
    auto adjust = launch();
    adjust->setPushToken({0xAB});
    const auto sendTransaction = [&](int number) {
        ADJEvent event("token1");
        event.setTransactionId("T" + std::to_string(number));
        adjust->send(event);
    };
    for (int number = 0; number < 11; ++number) sendTransaction(number);
    platform_->runUntilIdle();
    adjust = launch();
    platform_->console().clear();
    sendTransaction(1);
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("'T1' has been sent before")));
    sendTransaction(0); // eleven transactions ago
    EXPECT_THAT(lines(), SizeIs(1));
    platform_->runUntilIdle();

    EXPECT_THAT(posted(), SizeIs(13));
    EXPECT_THAT(*platform_->http().sent().back().request.body, HasSubstr("&push_token=ab&"));
    EXPECT_EQ(std::count(delegate->heard.begin(), delegate->heard.end(), "attribution N A"), 1);
}

TEST_F(AdjustOutbox, HasItsLogEmptiedWhateverMadeItLong) {
    const auto adjust = launch({});
    for (int number = 0; number < 400; ++number) {
        ADJEvent event("token1");
        event.setTransactionId(std::to_string(number));
        adjust->send(event);
        platform_->advance(10ms);
    }
    EXPECT_LT(std::filesystem::file_size(beside(file, "-wal")), 300 * 4096);
}

TEST_F(AdjustOutbox, LetsOneProcessDeliverAtATime) {
    const auto first = launch();
    platform_->runUntilIdle();
    platform_->http().hang(server);
    first->send(ADJEvent("token1"));
    platform_->runUntilIdle();
    auto second = launch();
    second->send(ADJEvent("token2"));
    platform_->advance(10s);
    EXPECT_THAT(posted(), ElementsAre("/session ", "/event token1"));

    platform_->http().answer(server, {.status = 200, .body = "{}"});
    platform_->advance(10min);

    EXPECT_THAT(posted(2), ElementsAre("/event token1", "/event token2"));
    for (const auto& package : second->packages()) EXPECT_EQ(package.state, PackageState::sent);
}

TEST_F(AdjustOutbox, KeepsInMemoryWhatAFullDiskDoesNotTake) {
    auto adjust = launch();
    {
        const SmallDisk full(std::filesystem::file_size(beside(file, "-wal")));
        adjust->send(ADJEvent("token1"));
        adjust->send(ADJEvent("token2"));
        platform_->runUntilIdle();
        adjust->send(ADJEvent("token3"));
    }
    EXPECT_THAT(posted(), ElementsAre("/session ", "/event token1", "/event token2"));
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("They stay in memory until they can be.")));
    adjust->send(ADJEvent("token4")); // the file would take it, but not before the others
    adjust.reset();
    EXPECT_THAT(lines(), SizeIs(2));
    const auto kept = OutboxAdjust::inspect(file).packages;
    const std::string tokens[] = {"", "token1", "token2", "token3", "token4"};
    ASSERT_THAT(kept, SizeIs(std::size(tokens)));
    for (std::size_t i = 0; i < kept.size(); ++i) {
        EXPECT_EQ(kept[i].eventToken, tokens[i]);
        EXPECT_EQ(kept[i].state, i < 3 ? PackageState::sent : PackageState::waiting);
    }
}

TEST_F(AdjustOutbox, GoesOnOverALaunchThatCannotReadItsFileAndForgetsNothing) {
    const auto state = home.path() / "state", away = home.path() / "away";
    file = state / "outbox.sqlite";
    std::unique_ptr<OutboxAdjust> adjust;
    const auto launchAndSend = [&](const char* transaction) {
        platform_->advance(1h);
        adjust = launch();
        ADJEvent event("token1");
        event.setTransactionId(transaction);
        adjust->send(event);
        platform_->runUntilIdle();
    };
    launchAndSend("T1");
    launchAndSend("T2");
    adjust.reset();
    std::filesystem::rename(state, away);
    writeFile(state, "no folder");
    launchAndSend("T3");
    EXPECT_EQ(posted().back(), "/event token1");
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("They stay in memory until they can be.")));
    std::filesystem::remove(state);
    std::filesystem::rename(away, state);
    adjust.reset();
    platform_->console().clear();

    launchAndSend("T1");
    EXPECT_THAT(*platform_->http().sent().back().request.body, HasSubstr("session_count=3&"));
    launchAndSend("T3");
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("'T1' has been sent"), HasSubstr("'T3' has been sent")));
}

TEST_F(AdjustOutbox, DeliversFromMemoryWhereThereIsNoPlaceForAFile) {
    file.clear();
    const auto adjust = launch();
    adjust->send(ADJEvent("token1"));
    platform_->runUntilIdle();

    EXPECT_THAT(posted(), ElementsAre("/session ", "/event token1"));
    EXPECT_EQ(adjust->packages().back().state, PackageState::sent);
    EXPECT_THAT(lines(), IsEmpty());
}

} // namespace corvantile::AdjustOutboxStorageTest
