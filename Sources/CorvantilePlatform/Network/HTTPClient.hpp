#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/PlatformRequest.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvantile {

class DispatchQueue;

// Names as given; a name may occur more than once.
using HTTPHeaders = std::vector<std::pair<std::string, std::string>>;

struct HTTPRequest {
    std::string method = "GET";
    std::string url; // http or https
    HTTPHeaders headers = {};
    std::optional<std::string> body = {};
    // Over the whole exchange, from the call to the last byte of the answer.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
};

struct HTTPResponse {
    int status = 0;
    HTTPHeaders headers = {};
    std::string body = {};
    // Another address answered than the request was sent to. Platforms that cannot tell leave it false.
    bool isRedirected = false;
};

// The domain of every error that an exchange fails with; the code is an HTTPFailure.
inline constexpr const char* httpErrorDomain = "NSURLErrorDomain";

// Why there is no answer, with the phone system's own numbers. Platforms may give others.
enum class HTTPFailure : int {
    badURL = -1000,
    timedOut = -1001,
    cannotFindHost = -1003,
    cannotConnectToHost = -1004,
    networkConnectionLost = -1005,
    tooManyRedirections = -1007,
    notConnectedToInternet = -1009,
    badServerResponse = -1011,
    secureConnectionFailed = -1200,
};

// HTTP for everything that the framework and its platforms send. Redirections are followed, a POST going on
// as a GET after 301, 302 and 303; nothing is cached or retried, and servers prove who they are. Threads:
// any.
class CORVANTILE_API HTTPClient : NonCopyable {
public:
    // Either the answer, whatever its status, or the error (an NSError).
    using Completion = std::function<void(std::optional<HTTPResponse> response, std::exception_ptr error)>;

    virtual ~HTTPClient();

    // The client of the installed platform.
    [[nodiscard]] static std::shared_ptr<HTTPClient> shared();

    // Calls `completion` on `queue` exactly once, never inside this call, unless the request is let go before
    // or the platform ends.
    [[nodiscard]] virtual std::shared_ptr<PlatformRequest>
    send(HTTPRequest request, std::shared_ptr<DispatchQueue> queue, Completion completion) = 0;
};

} // namespace corvantile
