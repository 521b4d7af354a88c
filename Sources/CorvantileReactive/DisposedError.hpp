#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <exception>

namespace corvantile::rx {

// What a subscriber of a disposed subject gets.
[[nodiscard]] CORVANTILE_API std::exception_ptr disposedError();

} // namespace corvantile::rx
