#pragma once

#include "CorvantileReactive/Describe.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/DebugPrinter.hpp"
#include "CorvantileReactive/detail/Stage.hpp"

#include <atomic>
#include <exception>
#include <memory>
#include <string>
#include <utility>

namespace corvantile::rx {

namespace detail {

// Prints `isDisposed` once: after the stage's own terminal, or when the chain is torn down.
class DisposedLine final {
public:
    explicit DisposedLine(std::shared_ptr<const DebugPrinter> printer) : printer_(std::move(printer)) {}

    void print() noexcept {
        if (!printed_.exchange(true, std::memory_order_acq_rel)) printer_->print("isDisposed");
    }

private:
    const std::shared_ptr<const DebugPrinter> printer_;
    std::atomic<bool> printed_{false};
};

// Prints an event before the chain's flag is tested: an event after the end is printed, and not forwarded.
template <class T>
class DebugStage final : public Stage<T, T> {
public:
    DebugStage(std::shared_ptr<Observer<T>> downstream, Chain& chain,
               std::shared_ptr<const DebugPrinter> printer)
        : Stage<T, T>(std::move(downstream), chain),
          printer_(std::move(printer)),
          disposedLine_(std::make_shared<DisposedLine>(printer_)) {
        chain.addHook({.beforeUpstream = [line = disposedLine_] { line->print(); }});
    }

    void onNext(const T& value) noexcept override {
        printer_->printEvent("next(" + describeValue(value) + ")");
        this->downstream().next(value);
    }

    void onError(const std::exception_ptr& error) noexcept override {
        printer_->printEvent("error(" + describeValue(error) + ")");
        end(Terminal{error});
    }

    void onCompleted() noexcept override {
        printer_->printEvent("completed");
        end(Terminal{});
    }

private:
    void end(const Terminal& terminal) noexcept {
        this->downstream().end(terminal, [this] { disposedLine_->print(); });
    }

    const std::shared_ptr<const DebugPrinter> printer_;
    const std::shared_ptr<DisposedLine> disposedLine_;
};

template <class T>
class DebugSource final : public Source<T> {
public:
    DebugSource(std::shared_ptr<Source<T>> upstream, std::shared_ptr<const DebugPrinter> printer)
        : upstream_(std::move(upstream)), printer_(std::move(printer)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        printer_->print("subscribed");
        return upstream_->subscribe(std::make_shared<DebugStage<T>>(std::move(observer), chain, printer_),
                                    chain);
    }

private:
    std::shared_ptr<Source<T>> upstream_;
    std::shared_ptr<const DebugPrinter> printer_;
};

} // namespace detail

template <class T>
Observable<T> Observable<T>::debug(std::string label, bool trimOutput) const {
    return Observable(std::make_shared<detail::DebugSource<T>>(
        source_, std::make_shared<const detail::DebugPrinter>(std::move(label), trimOutput)));
}

} // namespace corvantile::rx
