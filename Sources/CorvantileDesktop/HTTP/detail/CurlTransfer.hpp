#pragma once

#include "CorvantilePlatform/Network/HTTPClient.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <curl/curl.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

namespace corvantile {

class HTTPDelivery;

[[nodiscard]] std::exception_ptr httpError(HTTPFailure failure, const std::string& text);

// Why the exchange with `host` failed; `osError` is the system's number for a refused connection, or 0. The
// text names nothing else of the request.
[[nodiscard]] std::exception_ptr httpError(CURLcode code, long osError, const std::string& host);

// One exchange with one server, on a connection of its own: what a kept connection saves is not worth that a
// request is sent again without being asked when the server has just dropped it. One thread at a time.
class CurlTransfer : NonCopyable {
public:
    // `host` stands for the request in errors.
    CurlTransfer(HTTPRequest request, std::string host, std::shared_ptr<HTTPDelivery> delivery);
    ~CurlTransfer();

    [[nodiscard]] CURL* handle() const { return handle_.get(); }
    [[nodiscard]] bool isCancelled() const;

    // Posts what came of it. Once.
    void finish(CURLcode code);

private:
    struct Cleanup {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    template <class Value>
    void set(CURLoption option, Value value);
    void restrict();
    void describe();
    void describeHeaders();
    void appendHeader(const std::string& line);
    void collectAnswer();
    bool takes(std::size_t count);
    void readHeader(std::string_view line);
    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* self) noexcept;
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self) noexcept;

    const HTTPRequest request_; // lent to the handle
    const std::string host_;
    const std::shared_ptr<HTTPDelivery> delivery_;
    HTTPResponse response_;
    std::size_t received_ = 0;
    CURLcode setUp_ = CURLE_OK;
    std::unique_ptr<curl_slist, Cleanup> headers_;
    std::unique_ptr<CURL, Cleanup> handle_; // goes first
};

} // namespace corvantile
