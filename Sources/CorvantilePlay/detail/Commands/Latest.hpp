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
class News {
public:
    template <class T>
    explicit News(const rx::Observable<T>& stream)
        : hasCome_(std::make_shared<bool>(false)),
          subscription_(stream.subscribe([hasCome = hasCome_](const T&) { *hasCome = true; })) {
        *hasCome_ = false; // what was replayed is no news
    }
    News(const News&) = delete;
    News& operator=(const News&) = delete;
    ~News() { subscription_.dispose(); }

    [[nodiscard]] bool haveCome() const { return *hasCome_; }

private:
    const std::shared_ptr<bool> hasCome_;
    rx::Disposable subscription_;
};

} // namespace corvantile::tool
