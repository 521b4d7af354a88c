#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The plug-in under which purchase analytics is looked up.
class CORVANTILE_API IAPReceiptTrackingPluggable : public virtual PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "IAPReceiptTrackingPluggable";

    ~IAPReceiptTrackingPluggable() override;

    // For the host, once it has confirmed a purchase of the product: sends the purchase-validated event with
    // these parameters, once for the product's first purchase. Threads: main.
    virtual void trackValidatedPurchase(const std::string& productID,
                                        const std::optional<EventParameters>& params) = 0;
};

} // namespace corvantile
