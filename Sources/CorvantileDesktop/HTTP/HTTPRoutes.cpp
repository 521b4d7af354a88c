#include "CorvantileDesktop/HTTP/HTTPRoutes.hpp"

#include "CorvantileDesktop/HTTP/detail/WebAddress.hpp"

namespace corvantile {

namespace {

std::string_view withoutLastSlash(std::string_view text) {
    if (!text.empty() && text.back() == '/') text.remove_suffix(1);
    return text;
}

} // namespace

bool HTTPRoutes::set(std::string_view origin, std::string_view base) {
    const auto from = parseWebAddress(origin);
    const auto to = parseWebAddress(base);
    if (!from || !withoutLastSlash(from->rest).empty()) return false;
    if (!to || to->rest.find_first_of("?#") != std::string::npos) return false;
    const std::lock_guard lock(mutex_);
    bases_.insert_or_assign(from->origin(), withoutLastSlash(base));
    return true;
}

void HTTPRoutes::remove(std::string_view origin) {
    const auto from = parseWebAddress(origin);
    if (!from) return;
    const std::lock_guard lock(mutex_);
    bases_.erase(from->origin());
}

std::string HTTPRoutes::destination(std::string_view url) const {
    const auto address = parseWebAddress(url);
    if (!address) return std::string(url);
    const std::lock_guard lock(mutex_);
    const auto found = bases_.find(address->origin());
    return found == bases_.end() ? std::string(url) : found->second + address->rest;
}

} // namespace corvantile
