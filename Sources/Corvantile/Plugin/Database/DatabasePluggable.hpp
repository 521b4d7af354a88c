#pragma once

#include "Corvantile/Plugin/Database/Application.hpp"
#include "Corvantile/Plugin/Database/Setting.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <string_view>

namespace corvantile {

// The records of the device's user. Each stream replays its latest element; nothing is emitted before the
// user is known. Threads: main; the streams emit there.
class CORVANTILE_API DatabasePluggable : public virtual PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "DatabasePluggable";

    ~DatabasePluggable() override;

    [[nodiscard]] virtual rx::Observable<Application> application() = 0;
    [[nodiscard]] virtual rx::Observable<Setting> setting() = 0;
    // True once every record was loaded, or stood in for by its default, or neither could be done.
    [[nodiscard]] virtual rx::Observable<bool> isLoaded() = 0;

    // Emits the record, then stores it. Nothing happens while none is stored or there is no user.
    virtual void update(const Setting& setting) = 0;
    // Reads the stored record again and emits it; nothing when there is none.
    virtual void reloadApplication() = 0;
    // Stamps the record with the time of the moment, emits and stores it; waits for the first record.
    virtual void resetApplication() = 0;
};

} // namespace corvantile
