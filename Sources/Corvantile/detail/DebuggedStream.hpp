#pragma once

#include "Corvantile/Corvantile.hpp"
#include "CorvantileReactive/Observable.hpp"

#include <string>
#include <string_view>

namespace corvantile {

// The stream; while the debug switch is on, one that prints what happens to it under `label`.
template <class Element>
[[nodiscard]] rx::Observable<Element> debugged(rx::Observable<Element> stream, std::string_view label) {
    if (!Corvantile::debug()) return stream;
    return stream.debug(std::string(label));
}

} // namespace corvantile
