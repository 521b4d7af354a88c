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

// An event that waits.
template <class T>
class Event {
public:
    explicit Event(const T& value) : content_(std::in_place_index<0>, value) {}
    explicit Event(Terminal terminal) : content_(std::in_place_index<1>, std::move(terminal)) {}

    [[nodiscard]] bool isTerminal() const { return content_.index() == 1; }

    void deliverTo(Observer<T>& observer) const noexcept {
        if (const T* const value = std::get_if<0>(&content_))
            observer.onNext(*value);
        else
            std::get_if<1>(&content_)->deliverTo(observer);
    }

private:
    std::variant<T, Terminal> content_;
};

} // namespace corvantile::rx::detail
