#pragma once

#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <stdexcept>
#include <string>
#include <string_view>

namespace corvantile::tool {

// A command or an app description asks for something impossible. The text says what is wrong and what was
// expected. The engine catches it for commands, playMain for everything else.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// For text that a person wrote: `expected how many, such as 3, but found "x"`.
[[nodiscard]] inline UsageError unexpectedValue(std::string_view expected, std::string_view found) {
    return UsageError("expected " + std::string(expected) + ", but found \"" + shortened(found) + "\"");
}

} // namespace corvantile::tool
