#pragma once

#include "Tools/corvantile/Description/PlugInRegistry.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace corvantile::tool {

struct PlugInDescription {
    std::string kind;
    MakePlugIn make;
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

    [[nodiscard]] bool hasPlugIn(const std::string& kind) const;
};

// Reads `folder`/app.json. What cannot be read, is not known, or would end the app's process for want of a
// service, is a Refusal that names the file, the line or path of keys, and what was expected.
[[nodiscard]] AppDescription readAppDescription(const std::filesystem::path& folder,
                                                const PlugInRegistry& registry);

} // namespace corvantile::tool
