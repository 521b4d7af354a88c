#include "Corvantile/Plugin/AdNetwork/AdNetworkPlugin.hpp"

#include "Corvantile/Extension/detail/RecordJSON.hpp"
#include "CorvantilePlatform/Ads/AAAttribution.hpp"
#include "CorvantilePlatform/Ads/ASIdentifierManager.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/PlatformRequest.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "HostCore/detail/URLText.hpp"

#include <charconv>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>

namespace corvantile {

namespace {

constexpr const char* endpoint = "https://api-adservices.apple.com/api/v1/";

using Version = std::pair<int, int>;
constexpr Version firstWithTokens{14, 3};

// The first two numbers, as numbers: 14.10 is newer than 14.3.
Version version(std::string_view text) {
    Version version{0, 0};
    const auto* const end = text.data() + text.size();
    const auto* const point = std::from_chars(text.data(), end, version.first).ptr;
    if (point != end && *point == '.') std::from_chars(point + 1, end, version.second);
    return version;
}

std::optional<std::string> attributionToken() {
    try {
        return AAAttribution::attributionToken();
    } catch (...) {
        return std::nullopt; // as good as no campaign: many devices never have one
    }
}

HTTPRequest attributionRequest(std::string token) {
    return {.method = "POST",
            .url = urlText(endpoint),
            .headers = {{"Content-Type", "text/plain"}},
            .body = std::move(token),
            .timeout = std::chrono::seconds(7)};
}

void addCampaign(const HTTPResponse& response, AdNetworkInfo& info) {
    try {
        const auto payload = decodeJSON<AdNetworkAttributionPayload>(response.body);
        info["SA_Campaign_ID"] = std::to_string(payload.campaignId);
        info["SA_Keyword_ID"] = std::to_string(payload.keywordId);
        info["SA_Creative_ID"] = std::to_string(payload.creativeSetId);
        info["SA_Adgroup_ID"] = std::to_string(payload.adGroupId); // spelt so, unlike the field
    } catch (const NSError&) {
        // The info then stays as it is: the one sign of failure that subscribers get.
    }
}

struct Config {
    const std::string idfa = ASIdentifierManager::shared()->advertisingIdentifier();
};

} // namespace

AdNetworkAttributionPayload AdNetworkAttributionPayload::decode(const KeyedDecodingContainer& container) {
    const auto number = [&](std::string_view key) {
        return container.decodeIntegerIfPresent(key).value_or(0);
    };
    return {number("campaignId"), number("keywordId"), number("creativeSetId"), number("adGroupId")};
}

std::string encodeJSON(const AdNetworkAttributionPayload& payload) {
    return recordjson::write({{"campaignId", payload.campaignId},
                              {"keywordId", payload.keywordId},
                              {"creativeSetId", payload.creativeSetId},
                              {"adGroupId", payload.adGroupId}});
}

AdNetworkPluggable::~AdNetworkPluggable() = default;
AdNetworkPlugin::AdNetworkPlugin() = default;
AdNetworkPlugin::~AdNetworkPlugin() = default;

std::string AdNetworkPlugin::idfa() const { return Platform::current().process().record<Config>().idfa; }

bool AdNetworkPlugin::didFinishLaunchingWithOptions(UIApplication&, const LaunchOptions&) {
    fetchAttributionPayload({});
    return true;
}

void AdNetworkPlugin::fetchAttributionPayload(AdNetworkInfo info) {
    if (version(UIDevice::current()->systemVersion()) < firstWithTokens) return infoSubject_.onNext(info);
    auto token = attributionToken();
    if (!token) return infoSubject_.onNext(info);
    // The completion owns the request: the token is used up whether or not the plug-in is still there.
    const auto request = std::make_shared<std::shared_ptr<PlatformRequest>>();
    *request = HTTPClient::shared()->send(attributionRequest(std::move(*token)), DispatchQueue::main(),
                                          [weak = weak_from_this(), info = std::move(info),
                                           request](const auto& response, const auto&) mutable {
                                              request->reset();
                                              const auto self = weak.lock();
                                              if (!self) return;
                                              if (response) addCampaign(*response, info);
                                              self->infoSubject_.onNext(info);
                                          });
}

} // namespace corvantile
