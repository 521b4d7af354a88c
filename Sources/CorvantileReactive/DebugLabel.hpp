#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>
#include <string_view>

namespace corvantile::rx {

// `FILE:LINE (FUNCTION)`, with the file's folders left out and its ending kept.
[[nodiscard]] CORVANTILE_API std::string debugLabel(std::string_view file, int line,
                                                    std::string_view function);

} // namespace corvantile::rx
