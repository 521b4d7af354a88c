#pragma once

#include "Corvantile/Corvantile.hpp"
#include "CorvantileReactive/Observable.hpp"

#include <string_view>
#include <utility>

namespace corvantile {

// The stream; while the debug switch is on, one that prints its life under the label of a place in the code.
template <class Element>
[[nodiscard]] rx::Observable<Element> debugged(rx::Observable<Element> stream, std::string_view file,
                                               int line, std::string_view function) {
    if (!Corvantile::debug()) return stream;
    return stream.debug(rx::debugLabel(file, line, function));
}

} // namespace corvantile
