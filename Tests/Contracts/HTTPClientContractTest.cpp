#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include "Tests/Contracts/HTTPServers.hpp"
#include "Tests/Contracts/Harness.hpp"

namespace corvantile::HTTPClientContractTest {

using namespace std::chrono_literals;

int codeOf(const std::exception_ptr& error) {
    if (!error) return 0;
    try {
        std::rethrow_exception(error);
    } catch (const NSError& known) {
        EXPECT_EQ(known.domain(), httpErrorDomain);
        return known.code();
    }
}

// What came of one request. Look at it once `calls` is not 0.
struct Outcome {
    HTTPClient::Completion completion() {
        return [this, grip = grip](std::optional<HTTPResponse> answer, std::exception_ptr fault) {
            response = std::move(answer);
            code = codeOf(fault);
            ++calls;
        };
    }
    // Whether nobody holds the completion, once made, any more.
    [[nodiscard]] bool isReleased() const { return grip.use_count() == 1; }

    std::shared_ptr<int> grip = std::make_shared<int>(0);
    std::optional<HTTPResponse> response;
    int code = 0;
    std::atomic<int> calls{0};
};

template <class Harness>
class HTTPClientContract : public PortContract<Harness> {
protected:
    // Sends from an item of the queue that gets the answer, then lets `andThen` act in the same item.
    void send(
        HTTPRequest request, Outcome& outcome, std::function<void()> andThen = [] {}) {
        std::atomic<bool> isSent{false};
        queue_->async([&] {
            auto completion = [queue = queue_, inner = outcome.completion()](auto answer, auto fault) {
                EXPECT_TRUE(queue->isCurrent());
                inner(std::move(answer), std::move(fault));
            };
            handle_ = client_->send(std::move(request), queue_, std::move(completion));
            EXPECT_EQ(outcome.calls, 0);
            andThen();
            isSent = true;
        });
        EXPECT_TRUE(this->runUntil([&] { return isSent.load(); }));
    }

    void exchange(HTTPRequest request, Outcome& outcome) {
        send(std::move(request), outcome);
        EXPECT_TRUE(this->runUntil([&] { return outcome.calls > 0 && outcome.isReleased(); }));
        EXPECT_EQ(outcome.calls, 1);
    }

    ServerOf<Harness> server_{this->harness()};
    std::shared_ptr<HTTPClient> client_ = this->ports().http;
    std::shared_ptr<DispatchQueue> queue_ = this->makeQueue();
    std::shared_ptr<PlatformRequest> handle_;
};
TYPED_TEST_SUITE(HTTPClientContract, Harnesses);

TYPED_TEST(HTTPClientContract, CarriesARequestAndAnAnswerOfWhateverStatusByteForByte) {
    const std::string bytes("\0\r\n\xFF end", 8);
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"POST", bytes}, {"POST", std::nullopt}, {"GET", std::nullopt}, {"PUT", std::string(2 << 20, 'x')}};
    for (const auto& [method, body] : cases) {
        SCOPED_TRACE(method);
        Outcome outcome;

        this->exchange({.method = method,
                        .url = this->server_.origin() + "/echo?a=b%20c",
                        .headers = {{"Content-Type", "text/plain"}, {"X-Sample", "a: b"}},
                        .body = body},
                       outcome);

        ASSERT_TRUE(outcome.response) << outcome.code;
        EXPECT_EQ(outcome.response->status, 201);
        EXPECT_THAT(outcome.response->headers, Contains(Pair("X-Reply", "yes")));
        EXPECT_EQ(outcome.response->body, body.value_or(""));
        const auto received = this->server_.echoed().back();
        EXPECT_EQ(received.method, method);
        EXPECT_EQ(received.body.value_or(""), body.value_or(""));
        EXPECT_THAT(received.headers, Contains(Pair("Content-Type", "text/plain")).Times(1));
        EXPECT_THAT(received.headers, Contains(Pair("X-Sample", "a: b")));
    }

    for (const char* const path : {"/missing", "/moved"}) {
        SCOPED_TRACE(path);
        Outcome missing;
        this->exchange({.method = "POST", .url = this->server_.origin() + path, .body = bytes}, missing);
        EXPECT_EQ(missing.response.value().status, 404);
        EXPECT_EQ(missing.response->body, missingBody);
        EXPECT_EQ(missing.response->isRedirected, path == std::string("/moved"));
    }
}

TYPED_TEST(HTTPClientContract, TellsWhyThereIsNoAnswer) {
    const std::string origin = this->server_.origin();
    const std::pair<HTTPRequest, HTTPFailure> cases[] = {
        {{.url = this->server_.closedOrigin()}, HTTPFailure::cannotConnectToHost},
        {{.method = "POST", .url = origin + "/circle"}, HTTPFailure::tooManyRedirections},
        {{.url = origin + "/broken"}, HTTPFailure::networkConnectionLost},
        {{.url = origin + "/hang", .timeout = 150ms}, HTTPFailure::timedOut},
        {{.url = origin + "/echo", .timeout = 0ms}, HTTPFailure::timedOut},
        {{.url = "ftp://server.example/"}, HTTPFailure::badURL},
        {{.url = "http:///echo"}, HTTPFailure::badURL},
        {{.url = origin + "/echo\r\nX-Forged: 1"}, HTTPFailure::badURL},
        {{.method = "GET / HTTP/1.1\r\n", .url = origin}, HTTPFailure::badURL},
        {{.url = origin, .headers = {{"X-Sample", "1\r\nX-Forged: 1"}}}, HTTPFailure::badURL},
        {{.url = origin, .headers = {{"X-Sample: 1\nX-Forged", "1"}}}, HTTPFailure::badURL},
    };
    for (const auto& [request, failure] : cases) {
        SCOPED_TRACE(request.method + " " + request.url);
        Outcome outcome;

        this->exchange(request, outcome);

        EXPECT_EQ(outcome.response, std::nullopt);
        EXPECT_EQ(outcome.code, static_cast<int>(failure));
    }
}

TYPED_TEST(HTTPClientContract, IsSilentOnceLetGo) {
    for (const char* const path : {"/hang", "/echo"}) {
        SCOPED_TRACE(path);
        Outcome outcome;

        this->send({.url = this->server_.origin() + path}, outcome, [this] { this->handle_.reset(); });

        EXPECT_TRUE(this->runUntil([&] { return outcome.isReleased(); }));
        Outcome later; // whatever was posted for the first has had its turn
        this->exchange({.url = this->server_.origin() + "/missing"}, later);
        EXPECT_EQ(outcome.calls, 0);
    }
}

TYPED_TEST(HTTPClientContract, EndsWithTheProcess) {
    Outcome underWay;
    this->send({.url = this->server_.origin() + "/hang"}, underWay);

    this->endProcess();
    EXPECT_TRUE(underWay.isReleased());

    Outcome late;
    const auto handle =
        this->client_->send({.url = this->server_.origin() + "/echo"}, this->queue_, late.completion());
    EXPECT_TRUE(late.isReleased());
    EXPECT_EQ(underWay.calls + late.calls, 0);
}

} // namespace corvantile::HTTPClientContractTest
