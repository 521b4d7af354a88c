#pragma once

#include "CorvantilePlay/detail/Text/Refusal.hpp"

#include <string>
#include <string_view>

namespace corvantile::tool {

// Of what a person wrote: `expected how many, such as 3, but found "x"`.
[[nodiscard]] inline Refusal misread(std::string_view expected, std::string_view found) {
    return Refusal("expected " + std::string(expected) + ", but found \"" + std::string(found) + "\"");
}

} // namespace corvantile::tool
