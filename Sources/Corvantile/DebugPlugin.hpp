#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

namespace corvantile {

// Sets the switches of the framework and of the libraries beside it, once, as it is made. Plug-ins read them
// from their own construction on, so it comes first in the host's list.
class CORVANTILE_API DebugPlugin final : public virtual PluggableApplicationDelegateService {
public:
    // A dry run exists only in debug.
    DebugPlugin(bool debug, bool enableDryRun);
    [[deprecated("Say what to switch on: DebugPlugin(debug, enableDryRun).")]] DebugPlugin();
    ~DebugPlugin() override;
};

} // namespace corvantile
