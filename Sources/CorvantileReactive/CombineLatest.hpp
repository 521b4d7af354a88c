#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/Event.hpp"
#include "CorvantileReactive/detail/Source.hpp"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

namespace corvantile::rx {

namespace detail {

// One subscription of combineLatest. Delivers under its recursive lock, alone among the operators: the two
// sides may emit on two threads, an element emitted from inside a delivery nests, another thread waits.
template <class A, class B, class Out, class Selector>
class CombineLatest final : public Detachable {
public:
    CombineLatest(std::shared_ptr<Observer<Out>> downstream, Chain& below, Selector selector)
        : downstream_(std::move(downstream), below), selector_(std::move(selector)) {}

    void detach(std::uint64_t) noexcept override {
        if (const auto chain = chainA_.lock()) chain->dispose();
        if (const auto chain = chainB_.lock()) chain->dispose();
    }

    // The final observer of a side's own chain.
    template <std::size_t Index>
    class Side final : public FinalObserver<std::tuple_element_t<Index, std::tuple<A, B>>> {
        using Element = std::tuple_element_t<Index, std::tuple<A, B>>;

    public:
        explicit Side(std::shared_ptr<CombineLatest> owner) : owner_(std::move(owner)) {}

        void onNext(const Element& value) noexcept override {
            if (this->isLive()) owner_->template next<Index>(value);
        }

    private:
        void terminated(const Terminal& terminal) noexcept override { owner_->end(Index, terminal); }

        const std::shared_ptr<CombineLatest> owner_;
    };

    // What the caller's handle keeps alive.
    struct Kept {
        std::shared_ptr<CombineLatest> owner;
        Disposable a, b;
    };

    static std::shared_ptr<Kept> begin(const std::shared_ptr<CombineLatest>& owner, Source<A>& a,
                                       Source<B>& b) {
        const auto sideA = std::make_shared<Side<0>>(owner);
        const auto sideB = std::make_shared<Side<1>>(owner);
        owner->chainA_ = sideA;
        owner->chainB_ = sideB;
        auto handleA = attach(a, sideA);
        auto handleB = attach(b, sideB);
        return std::make_shared<Kept>(Kept{owner, std::move(handleA), std::move(handleB)});
    }

private:
    template <std::size_t Index, class Element>
    void next(const Element& value) noexcept {
        const std::lock_guard lock(mutex_);
        std::get<Index>(latest_) = value;
        const auto& [a, b] = latest_;
        if (a && b)
            emit(*a, *b);
        else if (completed_[1 - Index])
            downstream_.end(Terminal{});
    }

    void emit(const A& a, const B& b) noexcept {
        std::optional<Out> result;
        try {
            result.emplace(selector_(a, b));
        } catch (...) {
            return downstream_.end(Terminal{std::current_exception()});
        }
        downstream_.next(*result);
    }

    // A side that completes without an element does not end the pair: the other's next element does.
    void end(std::size_t index, const Terminal& terminal) noexcept {
        const std::lock_guard lock(mutex_);
        completed_[index] = true;
        if (terminal.error || completed_[1 - index]) downstream_.end(terminal);
    }

    const Downstream<Out> downstream_;
    Selector selector_;
    std::weak_ptr<Chain> chainA_, chainB_;
    std::recursive_mutex mutex_;
    std::tuple<std::optional<A>, std::optional<B>> latest_;
    bool completed_[2] = {false, false};
};

template <class A, class B, class Out, class Selector>
class CombineLatestSource final : public Source<Out> {
public:
    CombineLatestSource(std::shared_ptr<Source<A>> a, std::shared_ptr<Source<B>> b, Selector selector)
        : a_(std::move(a)), b_(std::move(b)), selector_(std::move(selector)) {}

    Upstream subscribe(std::shared_ptr<Observer<Out>> observer, Chain& chain) override {
        using Combination = CombineLatest<A, B, Out, Selector>;
        const auto combination = std::make_shared<Combination>(observer, chain, selector_);
        return {.source = combination, .keep = Combination::begin(combination, *a_, *b_)};
    }

private:
    std::shared_ptr<Source<A>> a_;
    std::shared_ptr<Source<B>> b_;
    Selector selector_;
};

} // namespace detail

// Emits `selector(a, b)` of the latest elements, on every element once both sides have one. `a` is subscribed
// first, so that what it replays at once collapses to its last element. Fails with either side; completes
// when both have, or with an element of one side when the other completed without any. A throwing selector
// fails.
template <class A, class B, class Selector>
[[nodiscard]] auto combineLatest(const Observable<A>& a, const Observable<B>& b, Selector selector) {
    using Out = std::decay_t<std::invoke_result_t<Selector&, const A&, const B&>>;
    return Observable<Out>(std::make_shared<detail::CombineLatestSource<A, B, Out, Selector>>(
        a.source(), b.source(), std::move(selector)));
}

// Emits the two as a pair.
template <class A, class B>
[[nodiscard]] Observable<std::pair<A, B>> combineLatest(const Observable<A>& a, const Observable<B>& b) {
    return combineLatest(a, b,
                         [](const A& first, const B& second) { return std::pair<A, B>(first, second); });
}

} // namespace corvantile::rx
