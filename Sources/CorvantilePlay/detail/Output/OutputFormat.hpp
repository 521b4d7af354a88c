#pragma once

#include "CorvantilePlay/detail/Output/PlayEvent.hpp"

namespace corvantile::tool {

// Shows a play to somebody. Threads: `show` on any, one at a time; the rest on the engine's.
class OutputFormat {
public:
    OutputFormat() = default;
    OutputFormat(const OutputFormat&) = delete;
    OutputFormat& operator=(const OutputFormat&) = delete;
    virtual ~OutputFormat();

    virtual void show(const PlayEvent& event) = 0;

    // A person is asked for the next command; their answer came.
    virtual void showPrompt() = 0;
    virtual void endPrompt() = 0;
};

} // namespace corvantile::tool
