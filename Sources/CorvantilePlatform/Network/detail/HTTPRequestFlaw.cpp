#include "CorvantilePlatform/Network/detail/HTTPRequestFlaw.hpp"

#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include <algorithm>
#include <array>
#include <string_view>

namespace corvantile {

namespace {

bool isControl(char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; }

bool isTokenCharacter(char c) {
    constexpr std::string_view others = "!#$%&'*+-.^_`|~";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           others.find(c) != std::string_view::npos;
}

bool isToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isTokenCharacter);
}

bool isWebAddress(std::string_view url) {
    constexpr std::array<std::string_view, 2> beginnings{"http://", "https://"};
    const bool isWeb = std::any_of(beginnings.begin(), beginnings.end(), [url](std::string_view beginning) {
        if (url.substr(0, beginning.size()) != beginning || url.size() == beginning.size()) return false;
        return std::string_view("/?#").find(url[beginning.size()]) == std::string_view::npos;
    });
    return isWeb && std::none_of(url.begin(), url.end(), [](char c) { return isControl(c) || c == ' '; });
}

bool isHeaderValue(std::string_view value) {
    return std::none_of(value.begin(), value.end(), [](char c) { return isControl(c) && c != '\t'; });
}

} // namespace

std::string flawOf(const HTTPRequest& request) {
    if (!isWebAddress(request.url)) return "The request has no http or https address.";
    if (!isToken(request.method)) return "The request's method is no word.";
    for (const auto& [name, value] : request.headers) {
        if (!isToken(name)) return "A header of the request has a name that is no word.";
        if (!isHeaderValue(value))
            return "The request's header '" + name + "' holds a line break or the like.";
    }
    return {};
}

} // namespace corvantile
