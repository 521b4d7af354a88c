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

// Prints `isDisposed` once: with the stage's own terminal, or when the chain is torn down.
class DebugHook final : public StageHook {
public:
    explicit DebugHook(std::shared_ptr<const DebugPrinter> printer) : printer_(std::move(printer)) {}
    void beforeUpstream() noexcept override { print(); }
    void print() noexcept {
        if (!printed_.exchange(true, std::memory_order_acq_rel)) printer_->print("isDisposed");
    }

private:
    const std::shared_ptr<const DebugPrinter> printer_;
    std::atomic<bool> printed_{false};
};

// Prints an event before the chain's flag is asked: what comes after the end is seen here, and goes no
// further.
template <class T>
class DebugStage final : public Stage<T, T> {
public:
    DebugStage(std::shared_ptr<Observer<T>> downstream, Chain& chain,
               std::shared_ptr<const DebugPrinter> printer, DebugHook& hook)
        : Stage<T, T>(std::move(downstream), chain), printer_(std::move(printer)), hook_(hook) {}

    void onNext(const T& value) noexcept override {
        printer_->printEvent("next(" + describeValue(value) + ")");
        this->forward(value);
    }

    void onError(const std::exception_ptr& error) noexcept override {
        printer_->printEvent("error(" + describeValue(error) + ")");
        if (!this->chain().isDisposed()) this->downstream()->onError(error);
        end();
    }

    void onCompleted() noexcept override {
        printer_->printEvent("completed");
        if (!this->chain().isDisposed()) this->downstream()->onCompleted();
        end();
    }

private:
    void end() noexcept {
        hook_.print();
        this->chain().dispose();
    }

    const std::shared_ptr<const DebugPrinter> printer_;
    DebugHook& hook_; // owned by the chain
};

template <class T>
class DebugSource final : public Source<T> {
public:
    DebugSource(std::shared_ptr<Source<T>> upstream, std::shared_ptr<const DebugPrinter> printer)
        : upstream_(std::move(upstream)), printer_(std::move(printer)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        printer_->print("subscribed");
        auto hook = std::make_unique<DebugHook>(printer_);
        auto stage = std::make_shared<DebugStage<T>>(std::move(observer), chain, printer_, *hook);
        chain.addHook(std::move(hook));
        return upstream_->subscribe(std::move(stage), chain);
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
