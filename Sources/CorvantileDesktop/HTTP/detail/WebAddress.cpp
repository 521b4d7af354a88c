#include "CorvantileDesktop/HTTP/detail/WebAddress.hpp"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

namespace corvantile {

namespace {

struct Cleanup {
    void operator()(CURLU* address) const { curl_url_cleanup(address); }
};
using Parsed = std::unique_ptr<CURLU, Cleanup>;

std::string lowerCasePart(const Parsed& address, CURLUPart part, unsigned flags = 0) {
    char* text = nullptr;
    if (curl_url_get(address.get(), part, &text, flags) != CURLUE_OK) return {};
    std::string lower(text);
    curl_free(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

} // namespace

// The library that sends judges, so that both see the same host. It alone would forgive a wrong number of
// slashes.
std::optional<WebAddress> parseWebAddress(std::string_view text) {
    const auto colon = text.find("://");
    if (colon == std::string_view::npos || text.find('\0') != std::string_view::npos) return std::nullopt;
    const auto end = text.find_first_of("/?#", colon + 3);
    if (end == colon + 3) return std::nullopt;
    const Parsed parsed(curl_url());
    if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, std::string(text).c_str(), 0) != CURLUE_OK)
        return std::nullopt;
    WebAddress address{.scheme = lowerCasePart(parsed, CURLUPART_SCHEME),
                       .host = lowerCasePart(parsed, CURLUPART_HOST),
                       .port = lowerCasePart(parsed, CURLUPART_PORT, CURLU_NO_DEFAULT_PORT),
                       .rest = std::string(text.substr(std::min(end, text.size())))};
    if (address.host.empty() || (address.scheme != "http" && address.scheme != "https")) return std::nullopt;
    return address;
}

} // namespace corvantile
