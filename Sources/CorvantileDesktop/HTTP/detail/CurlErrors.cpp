#include "CorvantileDesktop/HTTP/detail/CurlErrors.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <cerrno>

namespace corvantile {

namespace {

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

} // namespace corvantile
