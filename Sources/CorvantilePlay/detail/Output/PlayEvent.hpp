#pragma once

#include "Corvantile/Plugin/Analytic/EventValue.hpp"

#include <chrono>
#include <string>

namespace corvantile::tool {

// One thing that happened during a play, for people (`text`) and for programs (`kind`, `fields`).
struct PlayEvent {
    std::chrono::nanoseconds time{}; // since the play began, on the monotonic clock
    std::string who;                 // "host", "sink", "console", "network", or where a command came from
    std::string kind;                // one word for each sort of event, such as "launch" or "error"
    std::string text;
    EventValue::Map fields = {};
};

} // namespace corvantile::tool
