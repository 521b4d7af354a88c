#pragma once

#include "Corvantile/Plugin/Database/FirstDateProtocol.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <string_view>

namespace corvantile {

// The plug-in under which the first-install date is looked up.
class CORVANTILE_API FirstDatePluggable : public virtual PluggableApplicationDelegateService,
                                          public FirstDateProtocol {
public:
    static constexpr std::string_view typeName = "FirstDatePluggable";

    ~FirstDatePluggable() override;
};

} // namespace corvantile
