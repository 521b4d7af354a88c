#include "Platform/Foundation/PlatformRequest.hpp"

namespace corvantile {

PlatformRequest::~PlatformRequest() = default;

} // namespace corvantile
