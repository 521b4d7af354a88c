#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <array>
#include <string>

namespace corvantile {

// An upper-case UUID of the random kind (version 4), made of these random bytes.
[[nodiscard]] CORVANTILE_API std::string uuidText(std::array<unsigned char, 16> randomBytes);

} // namespace corvantile
