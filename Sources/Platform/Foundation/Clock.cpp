#include "Platform/Foundation/Clock.hpp"

namespace corvantile {

Clock::~Clock() = default;

} // namespace corvantile
