#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace corvantile {

class DatabaseManipulating;

// Who the records belong to, and the way to them. Threads: main, but for `asyncOpen`, which any may call.
class CORVANTILE_API UserPreferenceProtocol : public virtual PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "UserPreferenceProtocol";

    // May throw; what it throws is printed and goes no further.
    using Block = std::function<void(DatabaseManipulating& store, const std::string& userID)>;

    ~UserPreferenceProtocol() override;

    // True, once for each time that a user is loaded; replays the last.
    [[nodiscard]] virtual rx::Observable<bool> isLoaded() = 0;
    virtual void loadDatabase(const std::string& userID) = 0;
    // No user from now on. Nothing is emitted; a load that is still delayed sets one again.
    virtual void invalidate() = 0;
    // Calls `block` on the main queue, always later. Whether there is a user is asked there, and without one
    // it is not called.
    virtual void asyncOpen(Block block) = 0;
};

} // namespace corvantile
