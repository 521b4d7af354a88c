#include "CorvantilePlatform/Store/StoreRequests.hpp"

#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

StoreRequests::~StoreRequests() = default;

std::shared_ptr<StoreRequests> StoreRequests::shared() { return Platform::current().ports().storeRequests; }

} // namespace corvantile
