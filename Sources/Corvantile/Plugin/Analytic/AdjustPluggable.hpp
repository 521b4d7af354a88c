#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <string_view>

namespace corvantile {

// The plug-in under which whoever starts the attribution SDK is looked up.
class CORVANTILE_API AdjustPluggable : public virtual PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "AdjustPluggable";

    ~AdjustPluggable() override;
};

} // namespace corvantile
