#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <cstdint>
#include <functional>

namespace corvantile {

// Explores the order in which queues may run: calls `body` with the seeds 0, 1, … below `count`, for
// TestOptions::seed. Stops at the first seed after which `hasFailed` answers true, or that throws, and names
// it on standard error. `hasFailed` is the test framework's: with GoogleTest, testing::Test::HasFailure.
CORVANTILE_API void forEachSeed(std::uint64_t count, const std::function<void(std::uint64_t seed)>& body,
                                const std::function<bool()>& hasFailed);

} // namespace corvantile
