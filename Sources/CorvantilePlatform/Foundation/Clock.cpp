#include "CorvantilePlatform/Foundation/Clock.hpp"

namespace corvantile {

Clock::~Clock() = default;

} // namespace corvantile
