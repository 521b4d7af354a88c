#pragma once

#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <chrono>
#include <map>
#include <memory>

namespace corvantile {

// The local time of the store's home, which every receipt has beside UTC. Threads: one at a time.
class PacificTime : NonCopyable {
public:
    PacificTime();
    ~PacificTime();

    // What it is ahead of UTC at `date`: a negative number.
    [[nodiscard]] std::chrono::seconds offset(Date date);

private:
    struct Close {
        void operator()(void** calendar) const;
    };
    // A time without a change of the clocks; a receipt has many dates in few of them.
    struct Season {
        double start = 0; // milliseconds of Unix time
        std::chrono::seconds offset{};
    };
    [[nodiscard]] Season season(double milliseconds, double& end) const;

    std::map<double, Season> seasons_; // by their ends
    const std::unique_ptr<void*, Close>
        calendar_; // null where ICU has no data: then it is UTC-8 all the year
};

} // namespace corvantile
