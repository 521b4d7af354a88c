#include "CorvantilePlatform/Ads/AAAttribution.hpp"
#include "CorvantilePlatform/Ads/ASIdentifierManager.hpp"
#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

AAAttribution::~AAAttribution() = default;
ASIdentifierManager::~ASIdentifierManager() = default;

std::string AAAttribution::attributionToken() { return Platform::current().ports().attribution->token(); }

std::shared_ptr<ASIdentifierManager> ASIdentifierManager::shared() {
    return Platform::current().ports().advertising;
}

} // namespace corvantile
