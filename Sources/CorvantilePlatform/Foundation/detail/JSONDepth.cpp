#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"

#include <algorithm>

namespace corvantile {

namespace {

// Where the quotation mark is that ends the string whose text begins at `begin`.
std::size_t closingQuote(std::string_view text, std::size_t begin) {
    auto quote = text.find('"', begin);
    while (quote != std::string_view::npos) {
        auto backslashes = quote;
        while (backslashes > begin && text[backslashes - 1] == '\\') --backslashes;
        if ((quote - backslashes) % 2 == 0) break;
        quote = text.find('"', quote + 1);
    }
    return std::min(quote, text.size());
}

} // namespace

bool isTooDeepJSON(std::string_view text) {
    if (text.size() <= greatestJSONDepth) return false;
    std::size_t depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char character = text[at];
        if (character == '"') {
            at = closingQuote(text, at + 1);
        } else if (character == '[' || character == '{') {
            if (++depth > greatestJSONDepth) return true;
        } else if ((character == ']' || character == '}') && depth > 0) {
            --depth;
        }
    }
    return false;
}

} // namespace corvantile
