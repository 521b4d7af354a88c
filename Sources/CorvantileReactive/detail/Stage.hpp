#pragma once

#include "CorvantileReactive/Observer.hpp"
#include "CorvantileReactive/detail/Source.hpp"

#include <exception>
#include <memory>
#include <utility>

namespace corvantile::rx::detail {

// One operator inside a chain: receives In, forwards Out.
template <class In, class Out>
class Stage : public Observer<In> {
public:
    Stage(std::shared_ptr<Observer<Out>> downstream, Chain& chain)
        : downstream_(std::move(downstream), chain) {}

    void onError(const std::exception_ptr& error) noexcept override { downstream_.end(Terminal{error}); }
    void onCompleted() noexcept override { downstream_.end(Terminal{}); }

protected:
    [[nodiscard]] const Downstream<Out>& downstream() const { return downstream_; }

private:
    const Downstream<Out> downstream_;
};

// The source that an operator makes of another: every subscription gets a stage of its own, made with a copy
// of `parameter`.
template <class In, class Out, class Stage, class Parameter>
class StagedSource final : public Source<Out> {
public:
    StagedSource(std::shared_ptr<Source<In>> upstream, Parameter parameter)
        : upstream_(std::move(upstream)), parameter_(std::move(parameter)) {}

    Upstream subscribe(std::shared_ptr<Observer<Out>> observer, Chain& chain) override {
        return upstream_->subscribe(std::make_shared<Stage>(std::move(observer), chain, parameter_), chain);
    }

private:
    std::shared_ptr<Source<In>> upstream_;
    Parameter parameter_;
};

template <class In, class Out, class Stage, class Parameter>
[[nodiscard]] std::shared_ptr<Source<Out>> staged(std::shared_ptr<Source<In>> upstream, Parameter parameter) {
    return std::make_shared<StagedSource<In, Out, Stage, Parameter>>(std::move(upstream),
                                                                     std::move(parameter));
}

} // namespace corvantile::rx::detail
