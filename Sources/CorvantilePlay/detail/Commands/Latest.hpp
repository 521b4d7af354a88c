#pragma once

#include "CorvantileReactive/Disposable.hpp"
#include "CorvantileReactive/Observable.hpp"

#include <memory>
#include <optional>

// For streams that replay their latest element and emit on the main thread, which is the caller's.
namespace corvantile::tool {

// nullopt when the stream has emitted nothing yet.
template <class T>
[[nodiscard]] std::optional<T> latest(const rx::Observable<T>& stream) {
    std::optional<T> element;
    stream.subscribe([&element](const T& value) { element = value; }).dispose();
    return element;
}

// Notices whether the stream emits from now on.
class NextElement {
public:
    template <class T>
    explicit NextElement(const rx::Observable<T>& stream)
        : hasArrived_(std::make_shared<bool>(false)),
          subscription_(stream.subscribe([hasArrived = hasArrived_](const T&) { *hasArrived = true; })) {
        *hasArrived_ = false; // a replayed element does not count
    }
    NextElement(const NextElement&) = delete;
    NextElement& operator=(const NextElement&) = delete;
    ~NextElement() { subscription_.dispose(); }

    [[nodiscard]] bool hasArrived() const { return *hasArrived_; }

private:
    const std::shared_ptr<bool> hasArrived_;
    rx::Disposable subscription_;
};

} // namespace corvantile::tool
