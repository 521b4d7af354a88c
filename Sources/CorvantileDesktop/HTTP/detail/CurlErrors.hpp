#pragma once

#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include <curl/curl.h>

#include <exception>
#include <string>

namespace corvantile {

[[nodiscard]] std::exception_ptr httpError(HTTPFailure failure, const std::string& text);

// Why the exchange with `host` failed; `osError` is the system's number for a refused connection, or 0. The
// text names nothing else of the request.
[[nodiscard]] std::exception_ptr httpError(CURLcode code, long osError, const std::string& host);

} // namespace corvantile
