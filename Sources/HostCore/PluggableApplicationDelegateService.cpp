#include "HostCore/PluggableApplicationDelegateService.hpp"

#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

PluggableApplicationDelegateService::PluggableApplicationDelegateService()
    : livePlugins_(Platform::current().process().livePlugins()) {
    livePlugins_->fetch_add(1);
}

PluggableApplicationDelegateService::~PluggableApplicationDelegateService() { livePlugins_->fetch_sub(1); }

} // namespace corvantile
