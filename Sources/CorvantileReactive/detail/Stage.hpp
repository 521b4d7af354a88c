#pragma once

#include "CorvantileReactive/Observer.hpp"
#include "CorvantileReactive/detail/Source.hpp"

#include <exception>
#include <memory>
#include <utility>

namespace corvantile::rx::detail {

// One operator inside a chain: receives In, passes Out on. A terminal is forwarded first, then the chain is
// torn down, so the teardown runs inside the terminal's call, begun by the most downstream operator.
template <class In, class Out>
class Stage : public Observer<In> {
public:
    Stage(std::shared_ptr<Observer<Out>> downstream, Chain& chain)
        : downstream_(std::move(downstream)), chain_(chain) {
        chain_.noteStage();
    }

    void onError(const std::exception_ptr& error) noexcept override { fail(error); }
    void onCompleted() noexcept override { complete(); }

protected:
    void forward(const Out& value) noexcept {
        if (!chain_.isDisposed()) downstream_->onNext(value);
    }

    void fail(const std::exception_ptr& error) noexcept {
        if (!chain_.isDisposed()) downstream_->onError(error);
        chain_.dispose();
    }

    void complete() noexcept {
        if (!chain_.isDisposed()) downstream_->onCompleted();
        chain_.dispose();
    }

    [[nodiscard]] Chain& chain() const { return chain_; }
    [[nodiscard]] const std::shared_ptr<Observer<Out>>& downstream() const { return downstream_; }

private:
    const std::shared_ptr<Observer<Out>> downstream_;
    Chain& chain_; // in the final observer, which downstream_ keeps alive
};

// The source that an operator makes of another: every subscription gets a stage of its own.
template <class In, class Out, class MakeStage>
class StagedSource final : public Source<Out> {
public:
    StagedSource(std::shared_ptr<Source<In>> upstream, MakeStage makeStage)
        : upstream_(std::move(upstream)), makeStage_(std::move(makeStage)) {}

    Upstream subscribe(std::shared_ptr<Observer<Out>> observer, Chain& chain) override {
        return upstream_->subscribe(makeStage_(std::move(observer), chain), chain);
    }

private:
    std::shared_ptr<Source<In>> upstream_;
    MakeStage makeStage_;
};

template <class In, class Out, class MakeStage>
[[nodiscard]] std::shared_ptr<Source<Out>> staged(std::shared_ptr<Source<In>> upstream, MakeStage makeStage) {
    return std::make_shared<StagedSource<In, Out, MakeStage>>(std::move(upstream), std::move(makeStage));
}

} // namespace corvantile::rx::detail
