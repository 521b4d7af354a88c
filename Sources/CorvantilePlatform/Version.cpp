#include "CorvantilePlatform/Version.hpp"

namespace corvantile {

std::string_view libraryVersion() { return CORVANTILE_VERSION; }

} // namespace corvantile
