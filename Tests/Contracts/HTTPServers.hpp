#pragma once

#include "CorvantileTest/ScriptedHTTP.hpp"
#include "Tests/Contracts/TestHarness.hpp"

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
#include "Tests/Contracts/DesktopHarness.hpp"
#include "Tests/CorvantileDesktop/LoopbackServer.hpp"
#endif

#include <future>

namespace corvantile {

// A server within the platform's reach, by path: /echo gives the request's body back with status 201 and a
// header `X-Reply`, /missing is a 404 with a body, /moved redirects to what is the same to a GET, /hang never
// answers, /broken breaks off in the middle of the body, /circle redirects to itself. `ServerOf<Harness>`
// also offers an origin where nobody listens, and what /echo was sent.
inline constexpr const char* missingBody = "{\"error\":\"not here\"}";

template <class Harness>
class ServerOf;

template <>
class ServerOf<TestHarness> {
public:
    explicit ServerOf(TestHarness& harness) : http_(dynamic_cast<TestPlatform&>(harness.platform()).http()) {
        http_.handle(origin() + "/echo", [](const HTTPRequest& request) {
            return ScriptedReply{.response =
                                     HTTPResponse{201, {{"X-Reply", "yes"}}, request.body.value_or("")}};
        });
        for (const bool isMoved : {false, true})
            http_.answer(origin() + (isMoved ? "/moved" : "/missing"), {404, {}, missingBody, isMoved});
        http_.fail(origin() + "/circle", HTTPFailure::tooManyRedirections);
        http_.hang(origin() + "/hang");
        http_.fail(origin() + "/broken", HTTPFailure::networkConnectionLost);
    }

    [[nodiscard]] std::string origin() const { return "http://server.example"; }
    [[nodiscard]] std::string closedOrigin() const { return "http://closed.example"; }
    [[nodiscard]] std::vector<HTTPRequest> echoed() {
        std::vector<HTTPRequest> requests;
        for (const auto& sent : http_.sent()) requests.push_back(sent.request);
        return requests;
    }

private:
    ScriptedHTTP& http_;
};

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
template <>
class ServerOf<DesktopHarness> {
public:
    explicit ServerOf(DesktopHarness&) {}
    ~ServerOf() { ended_.set_value(); }

    [[nodiscard]] std::string origin() const { return "http://" + server_.address(); }
    // Port 1 is the system's to give, and no test machine has given it.
    [[nodiscard]] std::string closedOrigin() const { return "http://127.0.0.1:1"; }
    [[nodiscard]] std::vector<HTTPRequest> echoed() {
        const std::lock_guard lock(mutex_);
        return echoed_;
    }

private:
    void answer(const httplib::Request& request, httplib::Response& response) {
        if (request.path == "/echo") return echo(request, response);
        if (request.path == "/broken") return breakOff(response);
        if (request.path == "/hang") hasEnded_.wait();
        if (request.path == "/moved") return response.set_redirect("/found");
        if (request.path == "/circle") return response.set_redirect("/circle");
        const bool isAllowed = request.path != "/found" || request.method == "GET";
        response.status = isAllowed ? 404 : 405;
        response.set_content(missingBody, "application/json");
    }

    static void breakOff(httplib::Response& response) {
        response.set_content_provider(100, "text/plain",
                                      [](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                          return offset == 0 && sink.write("half", 4);
                                      });
    }

    void echo(const httplib::Request& request, httplib::Response& response) {
        response.status = 201;
        response.set_header("X-Reply", "yes");
        response.set_content(request.body, "application/octet-stream");
        const std::lock_guard lock(mutex_);
        echoed_.push_back({.method = request.method,
                           .url = request.target,
                           .headers = {request.headers.begin(), request.headers.end()},
                           .body = request.body});
    }

    std::mutex mutex_;
    std::vector<HTTPRequest> echoed_;
    std::promise<void> ended_;
    std::shared_future<void> hasEnded_ = ended_.get_future().share();
    LoopbackServer server_{
        [this](const httplib::Request& request, httplib::Response& response) { answer(request, response); }};
};
#endif

} // namespace corvantile
