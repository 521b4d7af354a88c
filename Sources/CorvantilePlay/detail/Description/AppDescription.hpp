#pragma once

#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"
#include "CorvantileDesktop/Ads/LocalAds.hpp"
#include "CorvantileDesktop/Store/DesktopStoreOptions.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlay/detail/Description/PlugInRegistry.hpp"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvantile::tool {

struct PlugInDescription {
    std::string kind;
    MakePlugIn make;
    FollowPlugIn follow;
};

struct SinkDescription {
    std::string name;
    std::string kind;
    std::vector<std::string> ignoredEventNames;
    bool registersAtLaunch = true;
    MakeSink make;
};

// An app as the tool plays it: what its delegate holds, and where its events go.
struct AppDescription {
    std::filesystem::path folder; // also the app's bundle
    std::string bundleIdentifier;
    std::string name;
    std::vector<PlugInDescription> plugIns;
    std::vector<SinkDescription> sinks;
    std::vector<Service>
        services; // all that can be looked up, whether a plug-in of this app offers it or not

    // Of the first IAPReceiptPlugin, which is the one that others find; nullopt without one.
    std::optional<std::vector<IAPReceiptPlugin::Product>> receiptProducts;
    AdjustOptions attribution;
    AdsOptions ads;
    DesktopStoreOptions store;
    std::map<std::string, std::string> httpRoutes;
    bool hasServer = false;     // the tool plays the services that the app talks to
    std::string promoteInstall; // a JSON file of the bundle, without its ending; empty: none

    [[nodiscard]] bool hasPlugIn(const std::string& kind) const;
    // A catalogue is named, whatever is in it.
    [[nodiscard]] bool hasStore() const { return !store.catalogue.empty(); }
};

// Reads `folder`/app.json. What cannot be read, is not known, or would end the app's process for want of a
// service, is a UsageError that names the file, the line or path of keys, and what was expected.
[[nodiscard]] AppDescription readAppDescription(const std::filesystem::path& folder,
                                                const PlugInRegistry& registry);

// The same for the text of `file`, which is only named in what is said of it.
[[nodiscard]] AppDescription parseAppDescription(const std::string& text, const std::filesystem::path& file,
                                                 const PlugInRegistry& registry);

} // namespace corvantile::tool
