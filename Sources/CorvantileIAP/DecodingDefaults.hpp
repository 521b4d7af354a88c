#pragma once

#include "CorvantilePlatform/Foundation/Date.hpp"

namespace corvantile {

// What stands in a record for what the store did not tell.
struct DecodingDefaults {
    DecodingDefaults() = delete;

    // The first second of year 1, UTC: earlier than any purchase, so nothing that ended then is still on.
    static constexpr Date invalidDate{-63114076800.0};
};

} // namespace corvantile
