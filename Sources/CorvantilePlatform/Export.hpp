#pragma once

// Marks what a shared build of the library shows to its users. Everything else stays hidden, so a class
// whose type must be known on both sides of the boundary (dynamic_cast, catch) carries it.
#define CORVANTILE_API __attribute__((visibility("default")))
