#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/Stage.hpp"

#include <exception>
#include <memory>
#include <optional>
#include <utility>

namespace corvantile::rx {

namespace detail {

template <class In, class Out, class Transform>
class MapStage final : public Stage<In, Out> {
public:
    MapStage(std::shared_ptr<Observer<Out>> downstream, Chain& chain, Transform transform)
        : Stage<In, Out>(std::move(downstream), chain), transform_(std::move(transform)) {}

    void onNext(const In& value) noexcept override {
        // Only the transform is guarded: what goes wrong downstream is not its fault.
        std::optional<Out> result;
        try {
            result.emplace(transform_(value));
        } catch (...) {
            return this->fail(std::current_exception());
        }
        this->forward(*result);
    }

private:
    Transform transform_;
};

} // namespace detail

template <class T>
template <class Transform>
auto Observable<T>::map(Transform transform) const
    -> Observable<std::decay_t<std::invoke_result_t<Transform&, const T&>>> {
    using Out = std::decay_t<std::invoke_result_t<Transform&, const T&>>;
    return Observable<Out>(detail::staged<T, Out>(source_, [transform = std::move(transform)](
                                                               std::shared_ptr<Observer<Out>> downstream,
                                                               detail::Chain& chain) {
        return std::make_shared<detail::MapStage<T, Out, Transform>>(std::move(downstream), chain, transform);
    }));
}

} // namespace corvantile::rx
