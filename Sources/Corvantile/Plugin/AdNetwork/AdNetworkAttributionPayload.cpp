#include "Corvantile/Plugin/AdNetwork/AdNetworkAttributionPayload.hpp"

#include "Corvantile/Extension/detail/RecordJSON.hpp"

namespace corvantile {

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

} // namespace corvantile
