#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The parts of an http or https address. Whoever the address names as its user is left out.
struct WebAddress {
    std::string scheme; // lower-case, as the host
    std::string host;   // an IPv6 address in its brackets
    std::string port;   // empty: the scheme's own
    std::string rest;   // path, query and fragment, as written

    [[nodiscard]] std::string hostAndPort() const { return port.empty() ? host : host + ":" + port; }
    [[nodiscard]] std::string origin() const { return scheme + "://" + hostAndPort(); }
};

[[nodiscard]] CORVANTILE_API std::optional<WebAddress> parseWebAddress(std::string_view text);

} // namespace corvantile
