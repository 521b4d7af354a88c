#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <exception>
#include <functional>

namespace corvantile::rx {

// What the streams do where nobody else is asked. Process-wide: a new platform begins with the stock hook.
class CORVANTILE_API Hooks {
public:
    using UnhandledError = std::function<void(const std::exception_ptr&)>;

    Hooks() = delete;

    // Called, on the delivering thread, for an error that reaches a subscription without an error handler.
    // The stock hook prints `Unhandled error happened: ERROR` in builds with assertions, and is silent
    // otherwise; an empty function brings it back. Never ends the process. Threads: any.
    static void setUnhandledError(UnhandledError hook);

    static void unhandledError(const std::exception_ptr& error) noexcept;
};

} // namespace corvantile::rx
