#pragma once

#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"
#include "CorvantileDesktop/Ads/LocalAds.hpp"
#include "CorvantileDesktop/Store/DesktopStoreOptions.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

struct PlugInDescription {
    PlayRegistry::PlugInKind kind;
    PlayConfiguration configuration;
    PlayRegistry::MakePlugIn make;
};

struct SinkDescription {
    PlayRegistry::SinkSettings settings;
    std::string kind;
    bool registersAtLaunch = true;
    PlayRegistry::MakeSink make;
};

// An app as the tool plays it: what its delegate holds, and where its events go.
struct AppDescription {
    std::filesystem::path folder; // also the app's bundle
    std::string bundleIdentifier;
    std::string name;
    std::vector<PlugInDescription> plugIns;
    std::vector<SinkDescription> sinks;
    PlayRegistry registry; // with which the description was read
    AdjustOptions attribution;
    AdsOptions ads;
    DesktopStoreOptions store;
    std::map<std::string, std::string> httpRoutes;
    bool hasServer = false;     // the tool plays the services that the app talks to
    std::string promoteInstall; // a JSON file of the bundle, without its ending; empty: none

    // The first plug-in of the kind, which is the one that others find; null without one.
    [[nodiscard]] const PlugInDescription* plugIn(std::string_view kind) const;
    [[nodiscard]] bool hasPlugIn(std::string_view kind) const { return plugIn(kind) != nullptr; }
    // For each product that both ConsumablePlugin and IAPReceiptPlugin are to see, what comes of that.
    [[nodiscard]] std::vector<std::string> consumableWarnings() const;
    // A catalogue is named, whatever is in it.
    [[nodiscard]] bool hasStore() const { return !store.catalogue.empty(); }
};

// The kinds of plug-ins that offer the service.
[[nodiscard]] std::vector<std::string> kindsOffering(const PlayRegistry& registry, std::string_view service);

// Reads what the top of a description says of the services that the app talks to.
void readServices(const PlayConfiguration& top, AppDescription& app);

// The folder of the sample app that belongs to this executable, in a build tree or installed. A UsageError
// when there is none.
[[nodiscard]] std::filesystem::path sampleAppFolder();

// The description in `folder`, or the sample app's if that is empty.
[[nodiscard]] AppDescription readApp(const std::filesystem::path& folder, const PlayRegistry& registry);

// Reads `folder`/app.json. What cannot be read, is not known, or would end the app's process for want of a
// service, is a UsageError that names the file, the line or path of keys, and what was expected.
[[nodiscard]] AppDescription readAppDescription(const std::filesystem::path& folder,
                                                const PlayRegistry& registry);

// The same for the text of `file`, which is only named in what is said of it.
[[nodiscard]] AppDescription parseAppDescription(const std::string& text, const std::filesystem::path& file,
                                                 const PlayRegistry& registry);

} // namespace corvantile::tool
