#include "Platform/Ads/AAAttribution.hpp"
#include "Platform/Ads/ASIdentifierManager.hpp"
#include "Platform/Platform.hpp"

namespace corvantile {

AAAttribution::~AAAttribution() = default;
ASIdentifierManager::~ASIdentifierManager() = default;

std::string AAAttribution::attributionToken() { return Platform::current().ports().attribution->token(); }

std::shared_ptr<ASIdentifierManager> ASIdentifierManager::shared() {
    return Platform::current().ports().advertising;
}

} // namespace corvantile
