#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/SelectingStage.hpp"

#include <utility>

namespace corvantile::rx {

template <class T>
template <class Predicate>
Observable<T> Observable<T>::filter(Predicate predicate) const {
    return Observable(detail::selected<T>(source_, std::move(predicate)));
}

} // namespace corvantile::rx
