#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <string_view>

namespace corvantile {

// When the app was first run on this device.
class CORVANTILE_API FirstDateProtocol : NonCopyable {
public:
    static constexpr std::string_view typeName = "FirstDateProtocol";

    virtual ~FirstDateProtocol();

    // Midnight, UTC, of the first day; once for each activation that could load or record it, replaying the
    // last. Emits on main.
    [[nodiscard]] virtual rx::Observable<Date> firstDate() = 0;
};

// The plug-in under which the first-install date is looked up.
class CORVANTILE_API FirstDatePluggable : public virtual PluggableApplicationDelegateService,
                                          public FirstDateProtocol {
public:
    static constexpr std::string_view typeName = "FirstDatePluggable";

    ~FirstDatePluggable() override;
};

} // namespace corvantile
