#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <exception>
#include <functional>

namespace corvantile {

// The host-app core library's process-wide settings. Threads: any.
class CORVANTILE_API HostCore {
public:
    // Receives the errors that nobody near can act on, such as a once-only marker that could not be saved. It
    // is called on the thread of whoever failed, and does not throw.
    using OmitBlock = std::function<void(const std::exception_ptr& error)>;

    HostCore() = delete;

    // Off until set.
    [[nodiscard]] static bool debug();
    static void setDebug(bool debug);

    // A copy; empty until set.
    [[nodiscard]] static OmitBlock omitBlock();
    static void setOmitBlock(OmitBlock block);
};

} // namespace corvantile
