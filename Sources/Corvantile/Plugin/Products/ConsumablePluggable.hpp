#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

// The plug-in under which purchases of consumables are looked up.
class CORVANTILE_API ConsumablePluggable : public virtual PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "ConsumablePluggable";

    ~ConsumablePluggable() override;

    // The consumables bought in each batch of the payment queue, an empty list where there are none; nothing
    // is replayed. Emits on main.
    [[nodiscard]] virtual rx::Observable<std::vector<std::string>> consumableProducts() = 0;
};

} // namespace corvantile
