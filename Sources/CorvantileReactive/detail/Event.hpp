#pragma once

#include "CorvantileReactive/Observer.hpp"

#include <exception>
#include <utility>
#include <variant>

namespace corvantile::rx::detail {

// How a stream ended: with an error, or, when that is empty, by completion.
struct Terminal {
    std::exception_ptr error;

    template <class T>
    void deliverTo(Observer<T>& observer) const noexcept {
        error ? observer.onError(error) : observer.onCompleted();
    }
};

// An element or a terminal, as a value.
template <class T>
class Event {
public:
    explicit Event(const T& value) : content_(std::in_place_index<0>, value) {}
    explicit Event(Terminal terminal) : content_(std::in_place_index<1>, std::move(terminal)) {}

    template <class Next, class End>
    void visit(const Next& next, const End& end) const noexcept {
        if (const T* const value = std::get_if<0>(&content_))
            next(*value);
        else
            end(*std::get_if<1>(&content_));
    }

    void deliverTo(Observer<T>& observer) const noexcept {
        visit([&](const T& value) { observer.onNext(value); },
              [&](const Terminal& terminal) { terminal.deliverTo(observer); });
    }

private:
    std::variant<T, Terminal> content_;
};

} // namespace corvantile::rx::detail
