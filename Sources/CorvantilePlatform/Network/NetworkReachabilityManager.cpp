#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"

namespace corvantile {

NetworkReachabilityManager::~NetworkReachabilityManager() = default;
NetworkReachabilityManagers::~NetworkReachabilityManagers() = default;

} // namespace corvantile
