#pragma once

#include "CorvantileReactive/Hooks.hpp"
#include "CorvantileReactive/detail/Source.hpp"

#include <cstddef>
#include <exception>
#include <memory>
#include <type_traits>
#include <utility>

namespace corvantile::rx::detail {

// Stands for a handler that was not given. A caller may also pass nullptr.
struct NoHandler {};

template <class Handler>
inline constexpr bool isAbsent =
    std::is_same_v<Handler, NoHandler> || std::is_same_v<Handler, std::nullptr_t>;

// The caller's handlers, stored in the node itself: one allocation, one indirect call per element.
template <class T, class OnNext, class OnError, class OnCompleted, class OnDisposed>
class Subscriber final : public FinalObserver<T> {
public:
    Subscriber(OnNext onNext, OnError onError, OnCompleted onCompleted, OnDisposed onDisposed)
        : onNext_(std::move(onNext)),
          onError_(std::move(onError)),
          onCompleted_(std::move(onCompleted)),
          onDisposed_(std::move(onDisposed)) {}

    void onNext(const T& value) noexcept override {
        if constexpr (!isAbsent<OnNext>)
            if (this->isLive()) onNext_(value);
    }

private:
    void terminated(const Terminal& terminal) noexcept override {
        if (terminal.error)
            failed(terminal.error);
        else if constexpr (!isAbsent<OnCompleted>)
            onCompleted_();
        runOnDisposed();
    }

    void failed(const std::exception_ptr& error) noexcept {
        if constexpr (isAbsent<OnError>)
            Hooks::unhandledError(error);
        else
            onError_(error);
    }

    void disposedByHandle() noexcept override {
        if (this->claimEnd()) runOnDisposed();
    }

    void runOnDisposed() noexcept {
        if constexpr (!isAbsent<OnDisposed>) onDisposed_();
    }

    [[no_unique_address]] OnNext onNext_;
    [[no_unique_address]] OnError onError_;
    [[no_unique_address]] OnCompleted onCompleted_;
    [[no_unique_address]] OnDisposed onDisposed_;
};

} // namespace corvantile::rx::detail
