#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

// What became of one request on the scripted network.
struct ScriptedReply {
    std::optional<HTTPResponse> response = {}; // none: it fails
    HTTPFailure failure = HTTPFailure::cannotConnectToHost;
    // Of virtual time. Longer than the request's time-out: it times out then.
    std::chrono::nanoseconds delay{0};
};

struct SentRequest {
    HTTPRequest request;
    bool isCancelled = false; // let go before its completion began
};

// A network that does what the test says: the longest prefix of a request's URL that has a script decides,
// at the moment of sending; a later script for the same prefix takes the former's place. Where none fits,
// nobody listens (`cannotConnectToHost`). A script says what the end of all redirections is. Threads: any.
class CORVANTILE_API ScriptedHTTP final : public HTTPClient {
public:
    using Script = std::function<ScriptedReply(const HTTPRequest&)>;

    ScriptedHTTP();
    ~ScriptedHTTP() override;

    void answer(std::string prefix, HTTPResponse response, std::chrono::nanoseconds delay = {});
    void fail(std::string prefix, HTTPFailure failure, std::chrono::nanoseconds delay = {});
    // No answer ever comes: the request's time-out ends the wait.
    void hang(std::string prefix);
    // `script` is called inside `send`, on the sender's thread.
    void handle(std::string prefix, Script script);

    // Every request so far, in the order sent.
    [[nodiscard]] std::vector<SentRequest> sent() const;

    [[nodiscard]] std::shared_ptr<PlatformRequest>
    send(HTTPRequest request, std::shared_ptr<DispatchQueue> queue, Completion completion) override;

private:
    struct Log;
    class Exchange;
    class Handle;

    [[nodiscard]] ScriptedReply replyTo(const HTTPRequest& request) const;

    const std::shared_ptr<Log> log_;
    mutable std::mutex mutex_;
    std::map<std::string, Script> scripts_; // by prefix
};

} // namespace corvantile
