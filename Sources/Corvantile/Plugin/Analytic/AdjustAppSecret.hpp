#pragma once

#include <cstdint>

namespace corvantile {

// What the SDK's service issues to sign an app's packages with. The host keeps it; the framework has none.
struct AdjustAppSecret {
    std::uint64_t id = 0;
    std::uint64_t info1 = 0;
    std::uint64_t info2 = 0;
    std::uint64_t info3 = 0;
    std::uint64_t info4 = 0;
};

} // namespace corvantile
