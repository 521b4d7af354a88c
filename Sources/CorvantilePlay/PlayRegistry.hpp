#pragma once

#include "Corvantile/Corvantile.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlay/PlayConfiguration.hpp"
#include "CorvantilePlay/PlayReporter.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

class AnalyticComponent;
namespace rx {
class DisposeBag;
} // namespace rx

/// The plug-ins, sinks and records that an app description may name, each under its kind.
/// A kind is read once, with the description, and made at each launch of the app. Functions that read or make
/// may throw; errors in the description come from PlayConfiguration. Threads: main.
class CORVANTILE_API PlayRegistry {
public:
    using PlugIn = std::shared_ptr<PluggableApplicationDelegateService>;
    using Sink = std::shared_ptr<AnalyticComponent>;

    /// Switched on for one launch, whatever the description says.
    struct LaunchSwitches {
        bool debug = false;
        bool dryRun = false;
    };
    /// A protocol under which plug-ins are looked up. `find` asks the running app, as any plug-in would.
    struct Service {
        std::string name;
        std::function<PlugIn()> find;
    };
    /// What a description says of each sink, whatever its kind. A new sink gets its ignored names from
    /// `make`.
    struct SinkSettings {
        std::string name;
        std::vector<std::string> ignoredEventNames;
    };

    using MakePlugIn = std::function<PlugIn(const LaunchSwitches&)>;
    using MakeSink = std::function<Sink(const SinkSettings&, PlayReporter&)>;

    struct PlugInKind {
        std::string name;
        std::vector<Service> offers = {};
        /// Protocols that another plug-in of the app has to offer; the description is invalid without one.
        std::vector<std::string_view> needs = {};
        std::function<MakePlugIn(const PlayConfiguration&)> read;
        /// Reports what the new plug-in publishes, until the bag is disposed. May be empty.
        std::function<void(const PlugIn&, PlayReporter&, rx::DisposeBag&)> follow = {};
    };
    struct SinkKind {
        std::string name;
        std::function<MakeSink(const PlayConfiguration&)> read;
    };
    /// `name` is the record's `typeName`. `isValid` gets the decrypted JSON of each stored record of that
    /// name.
    struct RecordKind {
        std::string name;
        std::function<bool(std::string_view json)> isValid;
    };

    /// Every plug-in, sink and record of the framework, and `RecordingSink`, which reports what reaches it.
    [[nodiscard]] static PlayRegistry framework();

    /// A second kind of the same name is a fatal error.
    void addPlugIn(PlugInKind kind);
    void addSink(SinkKind kind);
    void addRecord(RecordKind kind);

    /// In the order in which they were added.
    [[nodiscard]] const std::vector<PlugInKind>& plugIns() const { return plugIns_; }
    [[nodiscard]] const std::vector<SinkKind>& sinks() const { return sinks_; }
    [[nodiscard]] const std::vector<RecordKind>& records() const { return records_; }

    /// For `offers`: the protocol under which a plug-in is found.
    template <class Protocol>
    [[nodiscard]] static Service service() {
        return {std::string(Protocol::typeName), [] {
                    return std::dynamic_pointer_cast<PluggableApplicationDelegateService>(
                        Corvantile::queryAppDelegate<Protocol>());
                }};
    }

private:
    std::vector<PlugInKind> plugIns_;
    std::vector<SinkKind> sinks_;
    std::vector<RecordKind> records_;
};

} // namespace corvantile
