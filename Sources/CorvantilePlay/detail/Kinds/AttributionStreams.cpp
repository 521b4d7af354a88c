#include "CorvantilePlay/detail/Kinds/AttributionStreams.hpp"

namespace corvantile::tool {

Publication publicationOf(const AdNetworkInfo& info) {
    std::string text;
    for (const auto& [key, value] : info) text.append(text.empty() ? "" : " ").append(key + "=" + value);
    return {info.empty() ? "nothing, no campaign is known" : text, EventValue::Map(info.begin(), info.end())};
}

void followAdNetworkPlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag) {
    const auto adNetwork = std::dynamic_pointer_cast<AdNetworkPluggable>(plugIn);
    Follower("AdNetworkPlugin", reporter, bag)
        .follow("info", adNetwork->info(), [](const AdNetworkInfo& info) { return publicationOf(info); });
}

} // namespace corvantile::tool
