#include "CorvantileDesktop/HTTP/detail/CurlTransfer.hpp"

#include "CorvantileDesktop/HTTP/detail/HTTPDelivery.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <new>
#include <utility>

#include <strings.h>

namespace corvantile {

namespace {

// Upper bound for a response including headers. Larger responses are aborted.
constexpr std::size_t largestAnswer = 64UL * 1024 * 1024;

// More than these lead in a circle.
constexpr long mostRedirections = 16;

// Without it the library would begin by itself, which not every build of it does safely from several threads.
CURL* makeHandle() {
    static const CURLcode begun = curl_global_init(CURL_GLOBAL_DEFAULT);
    CURL* const handle = begun == CURLE_OK ? curl_easy_init() : nullptr;
    if (handle == nullptr) throw std::bad_alloc();
    return handle;
}

bool isSameName(const std::string& left, const char* right) { return strcasecmp(left.c_str(), right) == 0; }

// What frames the message follows from the body alone; said otherwise, the server would read another request
// out of it.
bool framesMessage(const std::string& name) {
    constexpr std::array names{"Content-Length", "Transfer-Encoding", "Connection", "Upgrade", "Expect"};
    return std::any_of(names.begin(), names.end(),
                       [&](const char* other) { return isSameName(name, other); });
}

bool alwaysHasBody(const std::string& method) {
    return method == "POST" || method == "PUT" || method == "PATCH";
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

HTTPFailure failureOf(CURLcode code, long osError) {
    switch (code) {
    case CURLE_URL_MALFORMAT: return HTTPFailure::badURL;
    case CURLE_OPERATION_TIMEDOUT: return HTTPFailure::timedOut;
    case CURLE_TOO_MANY_REDIRECTS: return HTTPFailure::tooManyRedirections;
    case CURLE_COULDNT_RESOLVE_HOST: return HTTPFailure::cannotFindHost;
    case CURLE_COULDNT_CONNECT:
        return osError == ENETUNREACH ? HTTPFailure::notConnectedToInternet
                                      : HTTPFailure::cannotConnectToHost;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
    case CURLE_PEER_FAILED_VERIFICATION: return HTTPFailure::secureConnectionFailed;
    case CURLE_UNSUPPORTED_PROTOCOL: // an answer that is no HTTP: the address's own scheme was checked
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_WRITE_ERROR: // ours: the answer is too large
    case CURLE_BAD_CONTENT_ENCODING: return HTTPFailure::badServerResponse;
    default: return HTTPFailure::networkConnectionLost;
    }
}

} // namespace

std::exception_ptr httpError(HTTPFailure failure, const std::string& text) {
    return std::make_exception_ptr(
        NSError(httpErrorDomain, static_cast<int>(failure), {{NSError::localizedDescriptionKey, text}}));
}

std::exception_ptr httpError(CURLcode code, long osError, const std::string& host) {
    const std::string reason =
        code == CURLE_WRITE_ERROR ? "Its answer is too large" : curl_easy_strerror(code);
    return httpError(failureOf(code, osError), "The exchange with " + host + " failed: " + reason + ".");
}

CurlTransfer::CurlTransfer(HTTPRequest request, std::string host, std::shared_ptr<HTTPDelivery> delivery)
    : request_(std::move(request)),
      host_(std::move(host)),
      delivery_(std::move(delivery)),
      handle_(makeHandle()) {
    restrict();
    describe();
    describeHeaders();
    collectAnswer();
}

CurlTransfer::~CurlTransfer() = default;

bool CurlTransfer::isCancelled() const { return delivery_->isCancelled(); }

void CurlTransfer::finish(CURLcode code) {
    if (setUp_ != CURLE_OK) code = setUp_;
    long number = 0;
    if (code != CURLE_OK) {
        curl_easy_getinfo(handle(), CURLINFO_OS_ERRNO, &number);
        return delivery_->fail(httpError(code, number, host_));
    }
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &number);
    response_.status = static_cast<int>(number);
    curl_easy_getinfo(handle(), CURLINFO_REDIRECT_COUNT, &number);
    response_.isRedirected = number > 0;
    delivery_->succeed(std::move(response_));
}

template <class Value>
void CurlTransfer::set(CURLoption option, Value value) {
    if (setUp_ == CURLE_OK) setUp_ = curl_easy_setopt(handle(), option, value);
}

// No proxy: one that the environment names would see what requests carry, and would be asked for loopback
// addresses. No reading of the user's own files, no waiting for the system's name look-up after a
// cancellation. A redirection leads to no other protocol than HTTP, and never out of a protected exchange.
void CurlTransfer::restrict() {
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, mostRedirections);
    set(CURLOPT_REDIR_PROTOCOLS_STR,
        isSameName(request_.url.substr(0, 6), "https:") ? "https" : "http,https");
    set(CURLOPT_FRESH_CONNECT, 1L);
    set(CURLOPT_FORBID_REUSE, 1L);
    set(CURLOPT_PROXY, "");
    set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
    set(CURLOPT_NOSIGNAL, 1L);
#if LIBCURL_VERSION_NUM >= 0x075700
    set(CURLOPT_QUICK_EXIT, 1L);
#endif
}

void CurlTransfer::describe() {
    const auto timeout = static_cast<long>(std::min<long long>(request_.timeout.count(), INT_MAX));
    set(CURLOPT_URL, request_.url.c_str());
    set(CURLOPT_TIMEOUT_MS, timeout);
    set(CURLOPT_CONNECTTIMEOUT_MS, timeout);
    if (request_.body || alwaysHasBody(request_.method)) {
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body ? request_.body->size() : 0));
        set(CURLOPT_POSTFIELDS, request_.body ? request_.body->data() : "");
    }
    if (request_.method == "HEAD") return set(CURLOPT_NOBODY, 1L);
    // A method that is given by name is kept whatever the redirection: 303 would repeat a POST.
    if (request_.method != "POST") set(CURLOPT_CUSTOMREQUEST, request_.method.c_str());
}

void CurlTransfer::describeHeaders() {
    // The library's defaults, which the request's headers replace.
    for (const char* const name : {"Accept", "Content-Type"})
        if (std::none_of(request_.headers.begin(), request_.headers.end(),
                         [name](const auto& header) { return isSameName(header.first, name); }))
            appendHeader(std::string(name) + ":");
    appendHeader("Expect:");
    for (const auto& [name, value] : request_.headers) {
        if (framesMessage(name)) continue;
        appendHeader(trimmed(value).empty() ? name + ";" : name + ": " + value);
    }
    set(CURLOPT_HTTPHEADER, headers_.get());
}

void CurlTransfer::appendHeader(const std::string& line) {
    auto* const list = curl_slist_append(headers_.get(), line.c_str());
    if (list == nullptr) throw std::bad_alloc();
    static_cast<void>(headers_.release());
    headers_.reset(list);
}

void CurlTransfer::collectAnswer() {
    set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
    set(CURLOPT_HEADERDATA, static_cast<void*>(this));
    set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
    set(CURLOPT_WRITEDATA, static_cast<void*>(this));
}

bool CurlTransfer::takes(std::size_t count) {
    if (count > largestAnswer - received_) return false;
    received_ += count;
    return true;
}

// A status line discards the headers so far: they were an interim response's.
void CurlTransfer::readHeader(std::string_view line) {
    if (line.substr(0, 5) == "HTTP/") return response_.headers.clear();
    const auto colon = line.find(':');
    if (colon == std::string_view::npos) return;
    response_.headers.emplace_back(trimmed(line.substr(0, colon)), trimmed(line.substr(colon + 1)));
}

std::size_t CurlTransfer::onHeader(char* bytes, std::size_t, std::size_t count, void* self) noexcept {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    if (!transfer.takes(count)) return 0;
    transfer.readHeader({bytes, count});
    return count;
}

std::size_t CurlTransfer::onBody(char* bytes, std::size_t, std::size_t count, void* self) noexcept {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    if (!transfer.takes(count)) return 0;
    transfer.response_.body.append(bytes, count);
    return count;
}

} // namespace corvantile
