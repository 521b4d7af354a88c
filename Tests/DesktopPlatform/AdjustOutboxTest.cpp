#include "Platform/Foundation/NSDecimalNumber.hpp"
#include "Tests/DesktopPlatform/AdjustOutboxFixture.hpp"
#include "Tests/DesktopPlatform/StoreFiles.hpp"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>

#include <sys/resource.h>

namespace corvantile {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

ADJEvent paid(double amount, std::string currency) {
    ADJEvent event("paid01");
    event.setRevenue(amount, std::move(currency));
    return event;
}

TEST_F(AdjustOutbox, SaysWhatItRefusesAndWhy) {
    using Action = std::function<void(OutboxAdjust&)>;
    const struct {
        const char* line;
        std::size_t packages; // with a session, after a launch
        Action action;
    } cases[] = {
        {"the app token is missing", 0, [](auto& adjust) { (void)adjust.makeConfig("", "sandbox"); }},
        {"'abc' has 3 characters, not 12", 0,
         [](auto& adjust) { (void)adjust.makeConfig("abc", "sandbox"); }},
        {"has 13 characters", 0, [](auto& adjust) { (void)adjust.makeConfig("abcdefghijk😀", "sandbox"); }},
        {"'Sandbox' is neither", 0, [](auto& adjust) { (void)adjust.makeConfig(appToken, "Sandbox"); }},
        {"was given no configuration", 0, [](auto& adjust) { adjust.launch(nullptr); }},
        {"is not valid", 0,
         [](auto& adjust) { adjust.launch(std::make_shared<ADJConfig>(std::nullopt, std::nullopt)); }},
        {"drops the event 'early1'", 0, [](auto& adjust) { adjust.send(ADJEvent("early1")); }},
        {"drops the subscription 'T1'", 0,
         [](auto& adjust) { adjust.send(ADJSubscription({}, "EUR", "T1", "")); }},
        {"started already", 1, [&](auto& adjust) { adjust.launch(validConfig(adjust)); }},
        {"it has no event token", 1, [](auto& adjust) { adjust.send(ADJEvent("")); }},
        {"its amount is negative", 2, [](auto& adjust) { adjust.send(paid(-1, "EUR")); }},
        {"its currency is missing", 2, [](auto& adjust) { adjust.send(paid(1, "")); }},
        {"its amount is no number", 2,
         [](auto& adjust) { adjust.send(paid(std::numeric_limits<double>::quiet_NaN(), "EUR")); }},
    };
    for (const auto& [line, packages, action] : cases) {
        SCOPED_TRACE(line);
        std::filesystem::remove_all(home.path() / "outbox.sqlite");
        removeLog(file);
        platform->console().clear();
        const auto adjust = packages > 0 ? launch({}) : make({});

        action(*adjust);

        EXPECT_THAT(lines(), ElementsAre(HasSubstr(line)));
        const auto found = adjust->packages();
        EXPECT_THAT(found, SizeIs(packages));
        for (const auto& package : found) EXPECT_EQ(package.revenue, "");
    }
    const auto quiet = make();
    auto config = validConfig(*quiet);
    config->setLogLevel(ADJLogLevel::suppress);
    quiet->launch(config);
    platform->console().clear();
    quiet->send(ADJEvent(""));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(AdjustOutbox, PostsFormsAsTheServerReadsThem) {
    const auto adjust = make({.endpoint = std::string(server) + "/", .bearerToken = "secret"});
    adjust->setPushToken({0x0A, 0xFF, 0x00});
    adjust->launch(validConfig(*adjust));
    ADJEvent event("a b&c");
    event.setRevenue(4.99, "EUR");
    adjust->send(event);
    ADJSubscription subscription(*NSDecimalNumber::fromText("9.99"), "USD", "1000/1",
                                 std::string("\xFF\0\xFE", 3));
    subscription.setTransactionDate(Date::fromUnixMilliseconds(1704164645678));
    subscription.setSalesRegion("DEU");
    adjust->send(subscription);

    platform->runUntilIdle();

    const std::string idfv = *device.vendorIdentifier();
    const auto common = "s2s=1&app_token=abcdefghijkl&environment=sandbox&idfv=" + idfv +
                        "&push_token=0aff00&created_at_unix=1704164645&package_id=";
    const auto packages = adjust->packages();
    ASSERT_THAT(packages, SizeIs(3));
    const std::pair<std::string, std::string> expected[] = {
        {"/session", "&session_count=1&os_version=" + device.systemVersion()},
        {"/event", "&event_token=a+b%26c&revenue=4.99000&currency=EUR"},
        {"/v2/purchase",
         "&revenue=9.99&currency=USD&transaction_id=1000%2F1&transaction_date="
         "2024-01-02T03%3A04%3A05.678Z%2B0000&sales_region=DEU&billing_store=iOS&receipt=%2FwD%2B"}};
    const auto sent = platform->http().sent();
    ASSERT_THAT(sent, SizeIs(3));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const auto& request = sent[i].request;
        EXPECT_EQ(request.method + " " + request.url, "POST " + (server + expected[i].first));
        EXPECT_EQ(request.body, common + packages[i].identifier + expected[i].second);
        EXPECT_THAT(request.headers,
                    ElementsAre(std::pair("Content-Type", "application/x-www-form-urlencoded"),
                                std::pair("Authorization", "Bearer secret")));
    }
    EXPECT_EQ(packages[2].transactionId, "1000/1");
}

ScriptedReply answered(int status, std::string body) {
    return {.response = HTTPResponse{.status = status, .body = std::move(body)}};
}

TEST_F(AdjustOutbox, KeepsAPackageUntilItIsAnswered) {
    const struct {
        const char* what;
        ScriptedReply reply;
        PackageState state;
        std::string heard;
    } cases[] = {
        {"well", answered(200, R"({"message":"m"})"), PackageState::sent, "event sent token1 m"},
        {"plain", answered(200, "OK\n"), PackageState::sent, "event sent token1 -"},
        {"refused", answered(400, R"({"error":"e"})"), PackageState::refused, "event failed token1 e"},
        {"broken, yet JSON", answered(500, "[]"), PackageState::refused, "event failed token1 -"},
        {"a page", answered(200, "<html>"), PackageState::waiting,
         "event failed token1 The server answered 200 without JSON. again"},
        {"empty", answered(500, ""), PackageState::waiting,
         "event failed token1 The server answered 500 without JSON. again"},
        {"reset", {.failure = HTTPFailure::networkConnectionLost}, PackageState::waiting, ""},
        {"hangs", {.delay = 24h}, PackageState::waiting, ""},
    };
    const auto adjust = launch();
    platform->runUntilIdle();
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        delegate->heard.clear();
        platform->http().handle(server, [&](const HTTPRequest&) { return one.reply; });
        const auto before = platform->http().sent().size();
        adjust->send(ADJEvent("token1"));
        adjust->send(ADJEvent("token2"));
        platform->advance(60s);

        const auto package = *(adjust->packages().end() - 2);
        EXPECT_EQ(package.state, one.state);
        EXPECT_EQ(package.tries, 1);
        ASSERT_THAT(delegate->heard, testing::Not(IsEmpty()));
        EXPECT_THAT(delegate->heard[0], HasSubstr(one.heard));

        platform->http().answer(server, {.status = 200, .body = "{}"});
        platform->advance(121s); // by then it has been tried again, before the other
        EXPECT_NE(adjust->packages().back().state, PackageState::waiting);
        std::vector<std::string> expected(one.state == PackageState::waiting ? 2 : 1, "/event token1");
        expected.emplace_back("/event token2");
        EXPECT_EQ(posted(before), expected);
        const auto sent = platform->http().sent();
        EXPECT_TRUE(expected.size() == 2 || sent[before].request.body == sent[before + 1].request.body);
    }
}

TEST_F(AdjustOutbox, WaitsLongerAfterEachFailureUnlessTheNetworkComesBack) {
    std::vector<std::chrono::nanoseconds> moments;
    const auto fail = [&](const HTTPRequest&) {
        moments.push_back(device.uptime());
        return ScriptedReply{};
    };
    const auto expectWaits = [&](std::chrono::nanoseconds first, std::chrono::nanoseconds longest) {
        ASSERT_THAT(moments, SizeIs(testing::Gt(14)));
        for (std::size_t i = 1; i < moments.size(); ++i) {
            const auto most =
                std::min(longest, first * (std::int64_t{1} << std::min<std::size_t>(i - 1, 20)));
            EXPECT_GE(moments[i] - moments[i - 1], most / 2) << i;
            EXPECT_LE(moments[i] - moments[i - 1], most) << i;
        }
    };
    platform->http().handle(server, fail);
    const auto adjust = launch();
    platform->advance(24h); // the first session of an installation is in a hurry
    expectWaits(200ms, 1h);
    platform->http().answer(server, {.status = 200, .body = "{}"});
    platform->advance(1h);
    moments.clear();
    platform->http().handle(server, fail);
    adjust->send(ADJEvent("token1"));
    platform->advance(24h * 10);
    expectWaits(120s, 24h);

    moments.clear();
    adjust->setOnline(false);
    platform->advance(48h);
    EXPECT_THAT(moments, IsEmpty());
    adjust->setOnline(true);
    platform->runUntilIdle();
    EXPECT_THAT(moments, SizeIs(1));
}

TEST_F(AdjustOutbox, RestsWithoutEndpointOfflineAndWhileTheAppIsNotActive) {
    auto adjust = launch({});
    adjust->send(ADJEvent("token1"));
    platform->advance(1h);
    EXPECT_THAT(posted(), IsEmpty());

    adjust = launch({.endpoint = server, .isOffline = true});
    platform->advance(1h);
    EXPECT_THAT(posted(), IsEmpty());
    adjust->setOnline(true);
    platform->runUntilIdle();
    EXPECT_THAT(posted(), ElementsAre("/session ", "/event token1", "/session "));

    adjust->setActive(false);
    adjust->send(ADJEvent("token2"));
    platform->advance(29min);
    EXPECT_THAT(posted(), SizeIs(3));
    adjust->setActive(true);
    platform->runUntilIdle();
    EXPECT_THAT(posted(), SizeIs(4)); // too short a rest for another session
    adjust->setActive(false);
    platform->advance(30min);
    adjust->setActive(true);
    platform->runUntilIdle();
    EXPECT_THAT(posted(), SizeIs(5));
    EXPECT_EQ(posted().back(), "/session ");

    adjust = make();
    const auto config = validConfig(*adjust);
    config->setSendInBackground(true);
    adjust->launch(config);
    adjust->setActive(false);
    adjust->send(ADJEvent("token3"));
    platform->runUntilIdle();
    EXPECT_EQ(posted().back(), "/event token3");
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
    const auto inspection = OutboxAdjust::inspect(file);
    EXPECT_EQ(inspection.fault, "");
    EXPECT_THAT(inspection.packages, SizeIs(1));
    EXPECT_THAT(inspection.setAside, SizeIs(1));

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
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{std::filesystem::file_size(beside(file, "-wal")), before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);

    adjust->send(ADJEvent("token1"));
    adjust->send(ADJEvent("token2"));
    platform->runUntilIdle();
    adjust->send(ADJEvent("token3"));
    setrlimit(RLIMIT_FSIZE, &before);

    EXPECT_THAT(posted(), ElementsAre("/session ", "/event token1", "/event token2"));
    EXPECT_THAT(lines(), ElementsAre(HasSubstr("They stay in memory until they can be.")));
    adjust.reset();
    EXPECT_THAT(lines(), SizeIs(2));
    std::vector<std::pair<std::string, PackageState>> kept;
    for (const auto& package : OutboxAdjust::inspect(file).packages)
        kept.emplace_back(package.eventToken, package.state);
    EXPECT_THAT(kept, ElementsAre(std::pair("", PackageState::sent), std::pair("token1", PackageState::sent),
                                  std::pair("token2", PackageState::sent),
                                  std::pair("token3", PackageState::waiting)));
}

} // namespace
} // namespace corvantile
