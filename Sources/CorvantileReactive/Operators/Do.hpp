#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/Stage.hpp"

#include <exception>
#include <functional>
#include <memory>
#include <utility>

namespace corvantile::rx {

namespace detail {

template <class T>
class DoStage final : public Stage<T, T> {
public:
    DoStage(std::shared_ptr<Observer<T>> downstream, Chain& chain,
            std::shared_ptr<const DoHandlers<T>> handlers)
        : Stage<T, T>(std::move(downstream), chain), handlers_(std::move(handlers)) {
        if (handlers_->onDispose) chain.addHook({.afterUpstream = handlers_->onDispose});
    }

    void onNext(const T& value) noexcept override {
        if (isDisposed() || !ran(handlers_->onNext, value)) return;
        this->downstream().next(value);
        ran(handlers_->afterNext, value);
    }

    void onError(const std::exception_ptr& error) noexcept override {
        if (isDisposed() || !ran(handlers_->onError, error)) return;
        this->downstream().end(Terminal{error}, [&] { ran(handlers_->afterError, error); });
    }

    void onCompleted() noexcept override {
        if (isDisposed() || !ran(handlers_->onCompleted)) return;
        this->downstream().end(Terminal{}, [this] { ran(handlers_->afterCompleted); });
    }

private:
    [[nodiscard]] bool isDisposed() const noexcept { return this->downstream().isDisposed(); }

    // False when the handler threw: the stream has then failed, and the event is dropped.
    template <class Handler, class... Arguments>
    bool ran(const Handler& handler, const Arguments&... arguments) noexcept {
        if (!handler) return true;
        try {
            handler(arguments...);
            return true;
        } catch (...) {
            this->downstream().end(Terminal{std::current_exception()});
            return false;
        }
    }

    const std::shared_ptr<const DoHandlers<T>> handlers_;
};

template <class T>
class DoSource final : public Source<T> {
public:
    DoSource(std::shared_ptr<Source<T>> upstream, DoHandlers<T> handlers)
        : upstream_(std::move(upstream)),
          handlers_(std::make_shared<const DoHandlers<T>>(std::move(handlers))) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        if (handlers_->onSubscribe) handlers_->onSubscribe();
        auto stage = std::make_shared<DoStage<T>>(std::move(observer), chain, handlers_);
        auto upstream = upstream_->subscribe(std::move(stage), chain);
        if (handlers_->onSubscribed) handlers_->onSubscribed();
        return upstream;
    }

private:
    std::shared_ptr<Source<T>> upstream_;
    std::shared_ptr<const DoHandlers<T>> handlers_;
};

} // namespace detail

template <class T>
Observable<T> Observable<T>::doOn(DoHandlers<T> handlers) const {
    return Observable(std::make_shared<detail::DoSource<T>>(source_, std::move(handlers)));
}

} // namespace corvantile::rx
