#pragma once

#include "Corvantile/Plugin/Products/SKProductRequestProtocol.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <string_view>

namespace corvantile {

// The plug-in under which the store's products are looked up.
class CORVANTILE_API SKProductRequestPluggable : public virtual PluggableApplicationDelegateService,
                                                 public SKProductRequestProtocol {
public:
    static constexpr std::string_view typeName = "SKProductRequestPluggable";

    ~SKProductRequestPluggable() override;
};

} // namespace corvantile
