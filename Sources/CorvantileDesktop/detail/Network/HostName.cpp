#include "CorvantileDesktop/detail/Network/HostName.hpp"

#include <algorithm>
#include <cstddef>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace corvantile {

namespace {

constexpr std::size_t longestName = 253;

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '-' || c == '_';
}

bool isIPv6Address(std::string_view text) {
    in6_addr address{};
    return inet_pton(AF_INET6, std::string(text).c_str(), &address) == 1;
}

} // namespace

bool isHostName(std::string_view host) {
    if (host.empty() || host.size() > longestName) return false;
    if (std::all_of(host.begin(), host.end(), isNameCharacter)) return true;
    return host.find('\0') == std::string_view::npos && isIPv6Address(host);
}

} // namespace corvantile
