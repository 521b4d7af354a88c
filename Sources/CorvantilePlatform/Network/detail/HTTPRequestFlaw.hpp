#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>

namespace corvantile {

struct HTTPRequest;

// What keeps a request from going out as it is written, such as a line break that would begin another header;
// empty when nothing does. Never shows a header's value. A platform fails such a request as `badURL`.
[[nodiscard]] CORVANTILE_API std::string flawOf(const HTTPRequest& request);

} // namespace corvantile
