#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "HostCore/Decoding.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace corvantile {

// Which search-ads campaign the app was installed from; all zeros when from none.
struct CORVANTILE_API AdNetworkAttributionPayload {
    static constexpr std::string_view typeName = "AdNetworkAttributionPayload";

    std::int64_t campaignId = 0;
    std::int64_t keywordId = 0;
    std::int64_t creativeSetId = 0;
    std::int64_t adGroupId = 0;

    // What is missing or null is 0.
    [[nodiscard]] static AdNetworkAttributionPayload decode(const KeyedDecodingContainer& container);

    friend bool operator==(const AdNetworkAttributionPayload&, const AdNetworkAttributionPayload&) = default;
};

[[nodiscard]] CORVANTILE_API std::string encodeJSON(const AdNetworkAttributionPayload& payload);

} // namespace corvantile
