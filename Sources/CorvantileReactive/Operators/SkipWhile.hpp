#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/SelectingStage.hpp"

#include <utility>

namespace corvantile::rx {

template <class T>
template <class Predicate>
Observable<T> Observable<T>::skipWhile(Predicate predicate) const {
    return Observable(detail::selected<T>(
        source_, [predicate = std::move(predicate), skipping = true](const T& value) mutable {
            if (skipping) skipping = predicate(value);
            return !skipping;
        }));
}

} // namespace corvantile::rx
