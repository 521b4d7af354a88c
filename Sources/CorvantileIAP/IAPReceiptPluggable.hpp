#pragma once

#include "CorvantileIAP/ProductCategory.hpp"
#include "CorvantileIAP/ReceiptInfo.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <string_view>
#include <vector>

namespace corvantile {

// The plug-in under which the user's purchases are looked up. Both streams replay the last and emit each time
// that the records have changed, on main: purchase analytics begins a pass over whatever is emitted.
class CORVANTILE_API IAPReceiptPluggable : public virtual PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "IAPReceiptPluggable";

    ~IAPReceiptPluggable() override;

    // The products of which something was bought; empty when nothing was. A category without a product is
    // left out by who reads them, its records neither reported nor marked as reported.
    [[nodiscard]] virtual rx::Observable<std::vector<ProductCategory>> productCategories() = 0;
    [[nodiscard]] virtual rx::Observable<std::vector<RenewalInfo>> renewals() = 0;
};

} // namespace corvantile
