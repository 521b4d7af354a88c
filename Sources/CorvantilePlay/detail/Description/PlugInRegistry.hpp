#pragma once

#include "Corvantile/Corvantile.hpp"
#include "CorvantilePlay/detail/Description/DescriptionObject.hpp"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace corvantile {
class AnalyticComponent;
class PluggableApplicationDelegateService;
namespace rx {
class DisposeBag;
} // namespace rx
} // namespace corvantile

namespace corvantile::tool {

class Reporter;
struct SinkDescription;

// Switched on for one launch, whatever the description says.
struct LaunchSwitches {
    bool debug = false;
    bool dryRun = false;
};

// A protocol under which plug-ins are looked up. `find` asks the running app as any plug-in would.
struct Service {
    std::string name;
    std::function<std::shared_ptr<PluggableApplicationDelegateService>()> find;
};

template <class Protocol>
[[nodiscard]] Service service() {
    return {std::string(Protocol::typeName), [] {
                return std::dynamic_pointer_cast<PluggableApplicationDelegateService>(
                    Corvantile::queryAppDelegate<Protocol>());
            }};
}

using MakePlugIn = std::function<std::shared_ptr<PluggableApplicationDelegateService>(const LaunchSwitches&)>;
// Tells, until the bag goes, what a plug-in of the kind publishes.
using FollowPlugIn = std::function<void(const std::shared_ptr<PluggableApplicationDelegateService>&,
                                        Reporter&, rx::DisposeBag&)>;
// With the events that the description lets it ignore.
using MakeSink = std::function<std::shared_ptr<AnalyticComponent>(const SinkDescription&, Reporter&)>;

// What a description calls "kind": how its configuration is read, once, and how one is made, at each launch.
struct PlugInKind {
    std::string name;
    std::vector<Service> offers;
    std::vector<std::string> needs; // services without which the framework ends the process
    std::function<MakePlugIn(const DescriptionObject& configuration)> read;
    FollowPlugIn follow = {};
};

struct SinkKind {
    std::string name;
    std::function<MakeSink(const DescriptionObject& configuration)> read;
};

struct PlugInRegistry {
    std::vector<PlugInKind> plugIns;
    std::vector<SinkKind> sinks;

    // Names every plug-in that offers the service.
    [[nodiscard]] std::vector<std::string> offering(const std::string& service) const;
};

// The kinds of the framework, and the recording sink.
[[nodiscard]] PlugInRegistry frameworkRegistry();

} // namespace corvantile::tool
