#pragma once

#include <cstddef>

// Counts what the whole program allocates; linking Allocations.cpp replaces the global operator new.
struct Allocations {
    std::size_t count = 0;
    std::size_t bytes = 0; // live
    static Allocations now();
};
