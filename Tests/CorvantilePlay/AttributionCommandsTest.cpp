#include "CorvantileDesktop/detail/Files/Descriptor.hpp"
#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "Tests/CorvantilePlay/EngineFixture.hpp"

#include <array>
#include <sstream>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace corvantile::tool::AttributionCommandsTest {

using testing::AnyOf;

// Offline, so that a test decides when its packages leave.
std::string appWith(const std::string& members) {
    return R"({
        "bundleIdentifier": "com.example.app",
        "name": "App",
        "plugins": [{"kind": "DebugPlugin"}, {"kind": "AnalyticPlugin"},
                    {"kind": "AdjustPlugin", "configuration": {"appToken": "abcdefghijkl", "debug": true}},
                    {"kind": "AdNetworkPlugin"}],
        "sinks": [{"kind": "AdjustAnalyticComponent", "name": "adjust", "ignore": ["quiet", "still"],
                   "configuration": {"eventTokenFile": "events"}}],
        "promoteInstall": "promotion",
        "ads": {"identifier": "00112233-4455-6677-8899-aabbccddeeff"},
        )" +
           members + "}";
}

constexpr const char* served = R"("attribution": {"offline": true}, "server": true)";

class AttributionCommands : public EngineFixture {
protected:
    AttributionCommands() {
        folder().write("events.json", R"([{"name": "open", "token": "o1"}, {"name": "sale", "token": "s1"},
                                          {"name": "quiet", "token": "q1"}])");
        beginWith(served);
    }

    void beginWith(const std::string& members) { begin(appWith(members).c_str()); }

    std::string inspected(ExitCode (*show)(const InspectOptions&, const PlayRegistry&, CommandOutput&),
                          bool json = false) {
        std::ostringstream out;
        CommandOutput output({out, out}, json);
        EXPECT_EQ(show({.state = folder().state()}, PlayRegistry::framework(), output), ExitCode::success);
        return out.str();
    }
};

TEST_F(AttributionCommands, DeliverWhatWasTrackedOffline) {
    play(
        {"launch", "push-token 0A1B", "track open", "revenue sale 4.99 USD", "track quiet", "track unknown"});
    EXPECT_THAT(takeTexts("sink"), ElementsAre("adjust ignores quiet: it is on its list"));

    play({"outbox"});
    EXPECT_THAT(takeTexts("host"),
                ElementsAre("session: waiting", "event o1: waiting", "event s1 4.99000 USD: waiting"));
    EXPECT_THAT(errorOf("deliver"), HasSubstr("online comes first"));

    play({"online", "deliver"});
    const auto happened = events();
    EXPECT_THAT(takeTexts("server"),
                ElementsAre("got /session session_count=1", "got /event event_token=o1 push_token=0a1b",
                            "got /event currency=USD event_token=s1 push_token=0a1b revenue=4.99000"));
    EXPECT_THAT(happened, Contains(testing::Field(&PlayEvent::text, "s1 was sent successfully -- Adjust")));
    EXPECT_THAT(happened, Contains(testing::Field(&PlayEvent::text,
                                                  StartsWith("Sample Network - Spring - Coins - 0123"))));
    play({"server"});
    EXPECT_THAT(takeTexts("server"), Contains(HasSubstr("app_token=abcdefghijkl")));

    play({"terminate"});
    EXPECT_THAT(inspected(showOutbox), HasSubstr("\n  event s1 4.99000 USD: sent at try 1, answer 200 {\""));
    EXPECT_THAT(inspected(showOutbox, true),
                AllOf(HasSubstr(R"("httpStatus":200)"), HasSubstr(R"("revenue":"4.99000","state":"sent")")));
    EXPECT_THAT(inspected(showHealth), HasSubstr("outbox: 3 packages, of which 0 wait"));
}

TEST_F(AttributionCommands, KeepWhatTheServerDoesNotTake) {
    EXPECT_EQ(shown({"launch", "server answer 500", "online", "deliver"}), "still waiting in the outbox: 1");

    EXPECT_EQ(shown({"server answer ok", "offline", "online", "deliver"}),
              "nothing waits in the outbox any more");

    EXPECT_EQ(shown({"server answer 400 '{\"error\": \"no\"}'", "track open", "deliver", "outbox"}),
              "event o1: refused at try 1, answer 400 {\"error\": \"no\"}");
}

TEST_F(AttributionCommands, ShowWhatALaunchLearnsOfItsCampaign) {
    const struct {
        const char* ads;
        const char* answer;
        const char* learnt;
    } cases[] = {
        {"ads none", "ok", "nothing, no campaign is known"},
        {"ads error", "ok", "nothing, no campaign is known"},
        {"ads token", "ok",
         "SA_Adgroup_ID=2345678901 SA_Campaign_ID=1234567890 SA_Creative_ID=0 SA_Keyword_ID=3456789012"},
        {"ads token t", "404 {}", "SA_Adgroup_ID=0 SA_Campaign_ID=0 SA_Creative_ID=0 SA_Keyword_ID=0"},
    };
    for (const auto& [ads, answer, learnt] : cases) {
        play({ads, std::string("server answer ") + answer, "relaunch"});
        EXPECT_EQ(shown({"attribution"}), std::string("this launch has learnt ") + learnt) << ads << answer;
    }
    EXPECT_EQ(shown({"idfa"}), "the advertising identifier is 00112233-4455-6677-8899-AABBCCDDEEFF");
}

TEST_F(AttributionCommands, RefuseADryRunThatWouldReachAnotherMachine) {
    const auto isRefused = [&](const std::string& members) {
        beginWith(members);
        return !engine().play("launch dry-run");
    };
    const auto at = [](const std::string& endpoint) {
        return R"("attribution": {"offline": true, "endpoint": ")" + endpoint + "\"}";
    };
    const auto away = at("https://a.example");
    EXPECT_TRUE(isRefused(away));
    EXPECT_TRUE(isRefused(at("http://127.0.0.1@a.example")));
    EXPECT_TRUE(isRefused(at("http://127.0.0.1.a.example")));
    EXPECT_FALSE(isRefused(at("http://127.0.0.1:9/x")));
    EXPECT_FALSE(isRefused(R"("attribution": {"offline": true})"));
    EXPECT_FALSE(isRefused(away + R"(, "httpRoutes": {"https://a.example": "http://[::1]:9"})"));
    EXPECT_FALSE(isRefused(away + R"(, "server": true)"));

    beginWith(away);
    EXPECT_THAT(errorOf("launch dry-run"), HasSubstr("trackIAPSubs passes every filter"));
    play({"launch"}); // without it, that is what the app is for
    EXPECT_THAT(errorOf("relaunch dry-run"), HasSubstr("is refused while"));
    play({"track open"}); // and it goes on
}

TEST_F(AttributionCommands, SayWhatIsWrongWithTheAppsFiles) {
    play({"launch"});
    EXPECT_THAT(errorOf("promote-install"), HasSubstr("no promotion.json"));
    folder().write("promotion.json", R"({"isEnabled": "true", "threshold": "3", "appID": "1", "appName": "A",
        "messageTitle": "T", "messageBody": "B", "noButtonTitle": "N", "yesButtonTitle": "Y"})");
    EXPECT_EQ(shown({"promote-install"}), R"(asks at 3: "T" "B" [N] [Y], for A (1))");

    folder().write("events.json", R"([{"name": "open"}])");
    EXPECT_THAT(errorOf("relaunch"), HasSubstr("events.json: expected event tokens"));
    EXPECT_THROW(beginWith(served), UsageError);

    folder().write("../events.json", "[]");
    auto outside = appWith(served);
    outside.replace(outside.find(R"("events")"), 8, R"("../events")");
    EXPECT_THROW(begin(outside.c_str()), UsageError);
}

// A connection to the played server, and what it answers to a request.
class Client {
public:
    explicit Client(int port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::connect(socket_.value(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    std::string answerTo(std::string_view request) {
        while (!request.empty()) { // the server may stop reading
            const auto sent = ::send(socket_.value(), request.data(), request.size(), MSG_NOSIGNAL);
            if (sent <= 0) break;
            request.remove_prefix(static_cast<std::size_t>(sent));
        }
        std::array<char, 256> answer{};
        const auto count = ::recv(socket_.value(), answer.data(), answer.size(), 0);
        return {answer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

private:
    Descriptor socket_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

TEST_F(AttributionCommands, ServeAnAppBesideIdleConnectionsAndBodiesOfAnySize) {
    play({"status"});
    const std::string before = "http://127.0.0.1:";
    int port = 0;
    for (const auto& event : events())
        if (const auto at = event.text.find(before); at != std::string::npos)
            port = std::stoi(event.text.substr(at + before.size()));
    std::vector<Client> idle;
    for (int connection = 0; connection < 150; ++connection) idle.emplace_back(port);
    EXPECT_EQ(shown({"launch", "online", "deliver"}), "nothing waits in the outbox any more");

    const std::string body(5 << 20, 'x');
    EXPECT_THAT(Client(port).answerTo("POST /a HTTP/1.1\r\nContent-Length: 99999999999\r\n\r\n"),
                Not(HasSubstr(" 200 ")));
    EXPECT_THAT(Client(port).answerTo("POST /b HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n500000\r\n" +
                                      body + "\r\n0\r\n\r\n"),
                Not(HasSubstr(" 200 ")));
    EXPECT_THAT(takeTexts("server"), Not(Contains(AnyOf(StartsWith("got /a"), StartsWith("got /b")))));
}

TEST_F(AttributionCommands, ExplainWhatTheyCannotDo) {
    play({"launch"});
    expectErrors({
        {"push-token 0A1", "expected bytes in hex"},
        {"push-token 0x1B", "expected bytes in hex"},
        {"ads tokn", "did you mean token?"},
        {"server answer 99", "expected ok or a status from 200 to 599, but found \"99\""},
        {"server anser", "did you mean answer?"},
    });
    beginWith(R"("attribution": {})");
    play({"launch"});
    EXPECT_THAT(errorOf("deliver"), HasSubstr("there is no endpoint"));
    EXPECT_THAT(errorOf("server"), HasSubstr("this play has no server"));
}

} // namespace corvantile::tool::AttributionCommandsTest
