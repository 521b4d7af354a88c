#pragma once

#include "CorvantilePlay/detail/Output/Happening.hpp"

namespace corvantile::tool {

// Shows a play to somebody. Threads: `show` on any, one at a time; the rest on the engine's.
class Face {
public:
    Face() = default;
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;
    virtual ~Face();

    virtual void show(const Happening& happening) = 0;

    // A person is asked for the next command; their answer came.
    virtual void invite() = 0;
    virtual void answered() = 0;
};

} // namespace corvantile::tool
