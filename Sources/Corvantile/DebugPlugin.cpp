#include "Corvantile/DebugPlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "CorvantileIAP/InappHelper.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "HostCore/HostCore.hpp"

namespace corvantile {

DebugPlugin::DebugPlugin(bool debug, bool enableDryRun) {
    HostCore::setDebug(debug);
    InappHelper::setDebug(debug);
    Corvantile::setDebug(debug);
    Corvantile::setDryRun(debug && enableDryRun);
}

DebugPlugin::DebugPlugin() { unimplementedInitializer("DebugPlugin"); }

DebugPlugin::~DebugPlugin() = default;

} // namespace corvantile
