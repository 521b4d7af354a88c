#pragma once

#include "CorvantileReactive/detail/Stage.hpp"

#include <exception>
#include <memory>
#include <utility>

namespace corvantile::rx::detail {

// A stage that passes an element on or drops it. `Decide` answers for each element in turn, and may throw.
template <class T, class Decide>
class SelectingStage final : public Stage<T, T> {
public:
    SelectingStage(std::shared_ptr<Observer<T>> downstream, Chain& chain, Decide decide)
        : Stage<T, T>(std::move(downstream), chain), decide_(std::move(decide)) {}

    void onNext(const T& value) noexcept override {
        bool passes = false;
        try {
            passes = decide_(value);
        } catch (...) {
            return this->fail(std::current_exception());
        }
        if (passes) this->forward(value);
    }

private:
    Decide decide_;
};

// Each subscription begins with a copy of `decide` as it is now.
template <class T, class Decide>
[[nodiscard]] std::shared_ptr<Source<T>> selected(std::shared_ptr<Source<T>> upstream, Decide decide) {
    return staged<T, T>(std::move(upstream), [decide = std::move(decide)](
                                                 std::shared_ptr<Observer<T>> downstream, Chain& chain) {
        return std::make_shared<SelectingStage<T, Decide>>(std::move(downstream), chain, decide);
    });
}

} // namespace corvantile::rx::detail
