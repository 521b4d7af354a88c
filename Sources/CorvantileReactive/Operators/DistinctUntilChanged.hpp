#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/SelectingStage.hpp"

#include <optional>

namespace corvantile::rx {

template <class T>
Observable<T> Observable<T>::distinctUntilChanged() const {
    return Observable(detail::selected<T>(source_, [last = std::optional<T>()](const T& value) mutable {
        if (last && *last == value) return false;
        last = value;
        return true;
    }));
}

} // namespace corvantile::rx
