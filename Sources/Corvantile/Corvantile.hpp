#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"

#include <memory>
#include <string_view>

namespace corvantile {

// The framework's process-wide settings, and the way to the host's plug-ins. Threads: any.
class CORVANTILE_API Corvantile {
public:
    Corvantile() = delete;

    // Wraps the framework's pipelines in the `debug` operator. Off until set.
    [[nodiscard]] static bool debug();
    static void setDebug(bool debug);

    // Events go to the console only (reports of subscriptions to every sink still), and no transaction is
    // marked as reported. Off until set.
    [[nodiscard]] static bool dryRun();
    static void setDryRun(bool dryRun);

    // The framework's bundle identifier.
    [[nodiscard]] static constexpr std::string_view domain() { return "com.corvantile.app.framework"; }

    // The host's delegate, held strongly. The first read asks the shared application, once and for all:
    // nothing asks again, even if there was none. So that read belongs on main. A write before it makes it
    // needless.
    [[nodiscard]] static std::shared_ptr<UIApplicationDelegate> appDelegate();
    static void setAppDelegate(std::shared_ptr<UIApplicationDelegate> delegate);

    // The host's first plug-in that is a `Service`; null when there is none, or the delegate holds no
    // plug-ins.
    template <class Service>
    [[nodiscard]] static std::shared_ptr<Service> queryAppDelegate() {
        const auto host = std::dynamic_pointer_cast<PluggableApplicationDelegate>(appDelegate());
        return host ? host->template queryService<Service>() : nullptr;
    }
};

} // namespace corvantile
