#pragma once

#include <string_view>

namespace corvantile {

// Whether `host` could be a host's name or address: not empty, not longer than names can be, and made of
// letters, digits, points, hyphens and underscores, or an IPv6 address. A URL or a port is neither.
[[nodiscard]] bool isHostName(std::string_view host);

} // namespace corvantile
