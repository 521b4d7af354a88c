#pragma once

#include "Corvantile/Plugin/AdNetwork/AdNetworkPluggable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"
#include "HostCore/Decoding.hpp"

#include <cstdint>
#include <memory>
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

// Asks once per launch which search-ads campaign the app was installed from: the platform's token, sent to
// the platform's server. Whatever fails, `info` gets its one value, on main. The request of a plug-in that is
// released before goes on, and its answer is dropped. Held by shared_ptr, as plug-ins are.
class CORVANTILE_API AdNetworkPlugin final : public AdNetworkPluggable,
                                             public std::enable_shared_from_this<AdNetworkPlugin> {
public:
    AdNetworkPlugin();
    ~AdNetworkPlugin() override;

    // Asks for the token inside the call, which the platform bounds; the server's answer comes later.
    bool didFinishLaunchingWithOptions(UIApplication& application, const LaunchOptions& options) override;

    [[nodiscard]] std::string idfa() const override;
    [[nodiscard]] rx::Observable<AdNetworkInfo> info() const override { return infoSubject_.asObservable(); }

private:
    void fetchAttributionPayload(AdNetworkInfo info);

    const rx::ReplaySubject<AdNetworkInfo> infoSubject_ = rx::ReplaySubject<AdNetworkInfo>::create(1);
};

} // namespace corvantile
