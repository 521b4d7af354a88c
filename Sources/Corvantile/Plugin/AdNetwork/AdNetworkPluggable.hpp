#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <map>
#include <string>
#include <string_view>

namespace corvantile {

// Texts for the host's analytics, by name.
using AdNetworkInfo = std::map<std::string, std::string>;

// The plug-in under which search-ads attribution is looked up.
class CORVANTILE_API AdNetworkPluggable : public virtual PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "AdNetworkPluggable";

    ~AdNetworkPluggable() override;

    // The device's advertising identifier as it was when this process first asked: an upper-case UUID, all
    // zeros where the user withholds it.
    [[nodiscard]] virtual std::string idfa() const = 0;

    // What this launch has learnt of the campaign, exactly once, also to those who come later: empty when it
    // learnt nothing.
    [[nodiscard]] virtual rx::Observable<AdNetworkInfo> info() const = 0;
};

} // namespace corvantile
