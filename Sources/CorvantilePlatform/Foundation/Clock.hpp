#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <chrono>

namespace corvantile {

// Wall time and the local time zone. Timers do not follow it: they belong to the queues. Threads: any.
class CORVANTILE_API Clock : NonCopyable {
public:
    virtual ~Clock();

    // The app's time. A platform with a store of its own may let it follow the store's.
    [[nodiscard]] virtual Date now() const = 0;

    // The device's time, which logs show. `now`, unless a platform lets that follow something else.
    [[nodiscard]] virtual Date deviceNow() const;

    // By how much local time is ahead of UTC at `date`; negative west of Greenwich.
    [[nodiscard]] virtual std::chrono::seconds localOffset(Date date) const = 0;
};

} // namespace corvantile
