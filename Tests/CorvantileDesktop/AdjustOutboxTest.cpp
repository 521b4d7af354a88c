#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"
#include "Tests/CorvantileDesktop/AdjustOutboxFixture.hpp"

#include <algorithm>

namespace corvantile::AdjustOutboxTest {

using namespace std::chrono_literals;

ADJEvent paid(double amount, std::string currency) {
    ADJEvent event("paid01");
    event.setRevenue(amount, std::move(currency));
    return event;
}

TEST_F(AdjustOutbox, SaysWhatItRefusesAndWhy) {
    const struct {
        const char* line;
        std::size_t packages; // with a session, after a launch
        std::function<void(OutboxAdjust&)> action;
    } cases[] = {
        {"has 13 characters", 0,
         [](auto& adjust) { EXPECT_EQ(adjust.makeConfig("abcdefghijk😀", "sandbox"), nullptr); }},
        {"'Sandbox' is neither", 0,
         [](auto& adjust) { EXPECT_EQ(adjust.makeConfig(appToken, "Sandbox"), nullptr); }},
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
        file = home.path() / line;
        platform_->console().clear();
        const auto adjust = packages > 0 ? launch({}) : make({});

        action(*adjust);

        EXPECT_THAT(lines(), ElementsAre(HasSubstr(line)));
        EXPECT_THAT(adjust->packages(), SizeIs(packages));
        for (const auto& package : adjust->packages()) EXPECT_EQ(package.revenue, "");
    }
    const auto quiet = make();
    auto config = validConfig(*quiet);
    config->setLogLevel(ADJLogLevel::suppress);
    quiet->launch(config);
    platform_->console().clear();
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

    platform_->runUntilIdle();

    const std::string idfv = *device_.vendorIdentifier();
    const auto common = "s2s=1&app_token=abcdefghijkl&environment=sandbox&idfv=" + idfv +
                        "&push_token=0aff00&created_at_unix=1704164645&package_id=";
    const auto packages = adjust->packages();
    ASSERT_THAT(packages, SizeIs(3));
    const std::pair<std::string, std::string> expected[] = {
        {"/session", "&session_count=1&os_version=" + device_.systemVersion()},
        {"/event", "&event_token=a+b%26c&revenue=4.99000&currency=EUR"},
        {"/v2/purchase",
         "&revenue=9.99&currency=USD&transaction_id=1000%2F1&transaction_date="
         "2024-01-02T03%3A04%3A05.678Z%2B0000&sales_region=DEU&billing_store=iOS&receipt=%2FwD%2B"}};
    const auto sent = platform_->http().sent();
    ASSERT_THAT(sent, SizeIs(3));
    for (std::size_t i = 0; i < sent.size(); ++i) {
        const auto& request = sent[i].request;
        EXPECT_EQ(request.method + " " + request.url, "POST " + (server + expected[i].first));
        EXPECT_EQ(request.body, common + packages[i].identifier + expected[i].second);
        EXPECT_THAT(request.headers,
                    ElementsAre(std::pair("Content-Type", "application/x-www-form-urlencoded"),
                                std::pair("Authorization", "Bearer secret")));
    }
}

ScriptedReply answered(int status, std::string body) {
    return {.response = HTTPResponse{.status = status, .body = std::move(body)}};
}

TEST_F(AdjustOutbox, KeepsAPackageUntilItIsAnswered) {
    const struct {
        ScriptedReply reply;
        PackageState state;
        std::string heard;
    } cases[] = {
        {answered(200, R"({"message":"m"})"), PackageState::sent, "event sent token1 m"},
        {answered(200, "OK\n"), PackageState::sent, "event sent token1 -"},
        {answered(400, R"({"error":"e"})"), PackageState::refused, "event failed token1 e"},
        {answered(500, "[]"), PackageState::refused, "event failed token1 -"},
        {answered(302, "{}"), PackageState::waiting,
         "event failed token1 The server sent the request elsewhere. again"},
        {{.response = HTTPResponse{.status = 200, .body = "{}", .isRedirected = true}},
         PackageState::waiting,
         "event failed token1 The server sent the request elsewhere. again"},
        {answered(200, "[" + std::string(1 << 20, ' ') + "]"), PackageState::waiting,
         "event failed token1 The server answered with 1048578 bytes. again"},
        {answered(200, "<html>"), PackageState::waiting,
         "event failed token1 The server answered 200 without JSON. again"},
        {answered(500, ""), PackageState::waiting,
         "event failed token1 The server answered 500 without JSON. again"},
        {{.delay = 24h}, PackageState::waiting, ""},
    };
    const auto adjust = launch();
    platform_->runUntilIdle();
    EXPECT_THAT(delegate->heard, ElementsAre("session sent fine"));
    for (const auto& one : cases) {
        SCOPED_TRACE(one.heard);
        delegate->heard.clear();
        platform_->http().handle(server, [&](const HTTPRequest&) { return one.reply; });
        const auto before = platform_->http().sent().size();
        adjust->send(ADJEvent("token1"));
        adjust->send(ADJEvent("token2"));
        platform_->advance(60s);

        const auto package = *(adjust->packages().end() - 2);
        EXPECT_EQ(package.state, one.state);
        EXPECT_EQ(package.tries, 1);
        EXPECT_THAT(delegate->heard.at(0), HasSubstr(one.heard));

        platform_->http().answer(server, {.status = 200, .body = "{}"});
        platform_->advance(121s); // by then it has been tried again, before the other
        EXPECT_NE(adjust->packages().back().state, PackageState::waiting);
        std::vector<std::string> expected(one.state == PackageState::waiting ? 2 : 1, "/event token1");
        expected.emplace_back("/event token2");
        EXPECT_EQ(posted(before), expected);
        const auto sent = platform_->http().sent();
        EXPECT_TRUE(expected.size() == 2 || sent[before].request.body == sent[before + 1].request.body);
    }
}

TEST_F(AdjustOutbox, WaitsLongerAfterEachFailureUnlessTheNetworkComesBack) {
    std::vector<std::chrono::nanoseconds> moments;
    bool fails = true;
    platform_->http().handle(server, [&](const HTTPRequest&) {
        moments.push_back(device_.uptime());
        return fails ? ScriptedReply{} : answered(200, "{}");
    });
    const auto adjust = launch();
    // The first session of an installation is in a hurry.
    const std::pair<std::chrono::nanoseconds, std::chrono::nanoseconds> waits[] = {{200ms, 1h}, {120s, 24h}};
    for (const auto& [first, longest] : waits) {
        moments.clear();
        adjust->send(ADJEvent("token1"));
        platform_->advance(24h * 10);
        ASSERT_THAT(moments, SizeIs(testing::Gt(14)));
        for (std::size_t i = 1; i < moments.size(); ++i) {
            const auto most =
                std::min(longest, first * (std::int64_t{1} << std::min<std::size_t>(i - 1, 20)));
            EXPECT_GE(moments[i] - moments[i - 1], most / 2) << i;
            EXPECT_LE(moments[i] - moments[i - 1], most) << i;
        }
        fails = false;
        platform_->advance(24h);
        fails = true;
    }
    adjust->send(ADJEvent("token1"));
    platform_->runUntilIdle();
    moments.clear();
    adjust->setOnline(false);
    platform_->advance(48h);
    EXPECT_THAT(moments, IsEmpty());
    adjust->setOnline(true);
    platform_->runUntilIdle();
    EXPECT_THAT(moments, SizeIs(1));
}

TEST_F(AdjustOutbox, RestsWithoutEndpointOfflineAndWhileTheAppIsNotActive) {
    auto adjust = launch({});
    adjust->send(ADJEvent("token1"));
    platform_->advance(1h);
    adjust = launch({.endpoint = server, .isOffline = true});
    platform_->advance(1h);
    EXPECT_THAT(posted(), IsEmpty());
    adjust->setOnline(true);
    platform_->runUntilIdle();
    EXPECT_THAT(posted(), ElementsAre("/session ", "/event token1", "/session "));

    for (const auto rest : {29min, 30min}) { // the first too short for another session
        adjust->setActive(false);
        adjust->send(ADJEvent("token2"));
        const auto before = posted();
        platform_->advance(rest);
        EXPECT_EQ(posted(), before);
        adjust->setActive(true);
        platform_->runUntilIdle();
    }
    EXPECT_THAT(posted(3), ElementsAre("/event token2", "/event token2", "/session "));

    adjust = make();
    const auto config = validConfig(*adjust);
    config->setSendInBackground(true);
    adjust->launch(config);
    adjust->setActive(false);
    adjust->send(ADJEvent("token3"));
    platform_->runUntilIdle();
    EXPECT_EQ(posted().back(), "/event token3");
}

} // namespace corvantile::AdjustOutboxTest
