#pragma once

#include "Corvantile/Plugin/Analytic/EventValue.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <string>

namespace corvantile {

/// Prints the events of a play: one line each on the terminal, one JSON object with `--json`.
/// Threads: any. Ownership: borrowed; it outlives the app's process.
class CORVANTILE_API PlayReporter {
public:
    PlayReporter() = default;
    PlayReporter(const PlayReporter&) = delete;
    PlayReporter& operator=(const PlayReporter&) = delete;
    virtual ~PlayReporter();

    /// `who` acted, in one word. `kind` is one word for the sort of event; `text` is for people, `fields` are
    /// for programs.
    virtual void report(std::string who, std::string kind, std::string text, EventValue::Map fields = {}) = 0;
};

} // namespace corvantile
