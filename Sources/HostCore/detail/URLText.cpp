#include "HostCore/detail/URLText.hpp"

#include "CorvantilePlatform/FatalError.hpp"

#include <string_view>

namespace corvantile {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEFabcdef";
constexpr std::string_view urlCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                           "-._~:/?#[]@!$&'()*+,;=%";

bool isURL(std::string_view text) {
    if (text.empty() || text.find_first_not_of(urlCharacters) != text.npos) return false;
    for (auto sign = text.find('%'); sign != text.npos; sign = text.find('%', sign + 1)) {
        const auto escape = text.substr(sign + 1, 2);
        if (escape.size() < 2 || escape.find_first_not_of(hexDigits) != escape.npos) return false;
    }
    return true;
}

} // namespace

std::string urlText(std::string text, const char* file, int line) {
    if (!isURL(text)) fatalError("Invalid URL.", file, line);
    return text;
}

} // namespace corvantile
