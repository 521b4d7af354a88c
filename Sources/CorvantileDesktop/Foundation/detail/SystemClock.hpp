#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"

#include <chrono>

namespace corvantile {

// The machine's clock, and its time zone as it is when this is made.
class CORVANTILE_API SystemClock final : public Clock {
public:
    SystemClock();
    ~SystemClock() override;

    [[nodiscard]] Date now() const override;
    [[nodiscard]] std::chrono::seconds localOffset(Date date) const override;
};

} // namespace corvantile
