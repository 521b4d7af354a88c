#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticProtocol.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <string_view>

namespace corvantile {

// The plug-in under which the router is looked up.
class CORVANTILE_API AnalyticPluggable : public virtual PluggableApplicationDelegateService,
                                         public AnalyticProtocol {
public:
    static constexpr std::string_view typeName = "AnalyticPluggable";

    ~AnalyticPluggable() override;
};

} // namespace corvantile
