#pragma once

#include <stdexcept>

namespace corvantile::tool {

// A command or a description asks for what cannot be done. The text says what is wrong and what was expected.
// Thrown where that is noticed, caught by the engine for commands and by `main` for the rest.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace corvantile::tool
