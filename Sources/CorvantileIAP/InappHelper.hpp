#pragma once

#include "Platform/Export.hpp"

namespace corvantile {

// The store-receipt library's front door.
class CORVANTILE_API InappHelper {
public:
    InappHelper() = delete;

    // Off until set. Process-wide; threads: any.
    [[nodiscard]] static bool debug();
    static void setDebug(bool debug);
};

} // namespace corvantile
