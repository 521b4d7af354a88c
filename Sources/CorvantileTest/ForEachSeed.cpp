#include "CorvantileTest/ForEachSeed.hpp"

#include <cinttypes>
#include <cstdio>

namespace corvantile {

namespace {

void reportFailure(std::uint64_t seed) {
    std::fprintf(stderr, "Failed with seed %" PRIu64 " of the queues.\n", seed);
    std::fflush(stderr);
}

} // namespace

void forEachSeed(std::uint64_t count, const std::function<void(std::uint64_t seed)>& body,
                 const std::function<bool()>& hasFailed) {
    for (std::uint64_t seed = 0; seed < count; ++seed) {
        try {
            body(seed);
        } catch (...) {
            reportFailure(seed);
            throw;
        }
        if (hasFailed()) return reportFailure(seed);
    }
}

} // namespace corvantile
