#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"

#include <memory>

namespace corvantile {

class LocalStore;

// The time of an app whose purchases a local store dates: the store's, so that a period that has ended there
// has ended for the app too.
class CORVANTILE_API LocalStoreClock final : public Clock {
public:
    LocalStoreClock(std::shared_ptr<LocalStore> store, std::shared_ptr<const Clock> device);
    ~LocalStoreClock() override;

    [[nodiscard]] Date now() const override;
    [[nodiscard]] Date deviceNow() const override;
    [[nodiscard]] std::chrono::seconds localOffset(Date date) const override;

private:
    const std::shared_ptr<LocalStore> store_;
    const std::shared_ptr<const Clock> device_;
};

} // namespace corvantile
