#pragma once

#include "CorvantileReactive/detail/Source.hpp"

#include <memory>
#include <utility>

namespace corvantile::rx::detail {

// Delivers everything inside the subscription, which it ends.
template <class T, class Deliver>
class ImmediateSource final : public Source<T> {
public:
    explicit ImmediateSource(Deliver deliver) : deliver_(std::move(deliver)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        deliver_(*observer);
        chain.dispose();
        return {{}, 0, {}, std::move(observer)};
    }

private:
    Deliver deliver_;
};

template <class T, class Deliver>
[[nodiscard]] std::shared_ptr<Source<T>> immediate(Deliver deliver) {
    return std::make_shared<ImmediateSource<T, Deliver>>(std::move(deliver));
}

} // namespace corvantile::rx::detail
