#pragma once

#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransactionObserver.hpp"

#include <atomic>
#include <memory>
#include <string_view>

namespace corvantile {

// A plug-in: receives the callbacks of the app's life and of its payment queue that the host's delegate
// forwards, and overrides those that concern it. Protocols of plug-ins inherit it virtually.
// Threads: callbacks on main; the end of a plug-in on any. A platform must be installed; it counts its
// plug-ins, and none should outlive it.
class CORVANTILE_API PluggableApplicationDelegateService : public UIApplicationDelegate,
                                                           public SKPaymentTransactionObserver {
public:
    static constexpr std::string_view typeName = "PluggableApplicationDelegateService";

    PluggableApplicationDelegateService();
    ~PluggableApplicationDelegateService() override;

private:
    // Shared with the platform, which may end first.
    const std::shared_ptr<std::atomic<int>> livePlugins_;
};

} // namespace corvantile
