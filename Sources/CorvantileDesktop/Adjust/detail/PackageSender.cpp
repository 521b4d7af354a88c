#include "CorvantileDesktop/Adjust/detail/PackageSender.hpp"

#include "CorvantilePlatform/Adjust/ADJConfig.hpp"
#include "CorvantilePlatform/Ads/ASIdentifierManager.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"

namespace corvantile {

namespace {

std::string identifierForAdvertising(ASIdentifierManager* manager) {
    if (manager == nullptr) return {};
    auto identifier = manager->advertisingIdentifier();
    return identifier == ASIdentifierManager::withheldIdentifier ? "" : identifier;
}

} // namespace

PackageSender senderOf(const ADJConfig& config, const UIDevice& device, ASIdentifierManager* advertising) {
    return {.appToken = config.appToken().value_or(""),
            .environment = config.environment().value_or(""),
            .idfa = config.allowIdfaReading() ? identifierForAdvertising(advertising) : "",
            .idfv = device.identifierForVendor().value_or(""),
            .systemVersion = device.systemVersion()};
}

} // namespace corvantile
