#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/FakeServer.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "HostCore/detail/JSON.hpp"

#include <optional>
#include <string>

namespace corvantile::tool {

namespace {

void reportServer(Host& host, const std::string& text, EventValue::Map fields = {}) {
    host.reporter().report("server", "server", text, std::move(fields));
}

void showArrivals(Host& host) {
    const auto arrivals = host.server().arrivals();
    if (arrivals.empty()) reportServer(host, "nothing has arrived yet");
    for (const auto& arrival : arrivals)
        reportServer(host, describe(arrival),
                     {{"path", arrival.path},
                      {"fields", EventValue::Map(arrival.fields.begin(), arrival.fields.end())}});
}

int parseStatus(const std::string& text) {
    const auto status = textInteger(text).value_or(0);
    if (status >= 200 && status <= 599) return static_cast<int>(status);
    throw unexpectedValue("ok or a status from 200 to 599", text);
}

void setAnswer(Host& host, Arguments given) {
    if (given.empty()) throw UsageError("server answer wants ok or STATUS: server answer STATUS [BODY]");
    if (given[0].text == "ok" && given.size() == 1) {
        host.server().answer(std::nullopt);
        return reportServer(host, "answers as the services do when all goes well");
    }
    const auto status = parseStatus(given[0].text);
    if (given.size() > 2)
        throw UsageError("a BODY of several words stands in quotes: server answer 200 '{}'");
    const auto body = given.size() == 2 ? given[1].text : "";
    host.server().answer(ServiceAnswer{status, body});
    reportServer(host, "answers everything with " + std::to_string(status) +
                           (body.empty() ? " and nothing else" : " and " + body));
}

void runServer(Host& host, Arguments given) {
    auto& server = host.server();
    if (given.empty()) return showArrivals(host);
    const auto& what = given[0].text;
    if (what == "answer") return setAnswer(host, given.subspan(1));
    if (what != "hang" || given.size() > 1)
        throw UsageError(what == "hang"
                             ? "server hang wants nothing more"
                             : unknownName("thing for the server to do", what, {"answer", "hang"}));
    server.hang();
    reportServer(host, "answers nothing any more");
}

} // namespace

std::vector<Command> serverCommands(Host& host) {
    return {
        {"server",
         "[answer|hang] [STATUS] [BODY]",
         "show what has arrived at the server that the tool plays, or say how it answers",
         [&host](Arguments given) { runServer(host, given); },
         {"server answer 500 lets it answer everything so, server answer 400 '{\"error\": \"no\"}' with that",
          "body; server answer ok lets it do as the services do; server hang lets it answer nothing."}},
    };
}

} // namespace corvantile::tool
