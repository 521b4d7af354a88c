#include "CorvantileLocalStore/detail/Ports/LocalStoreClock.hpp"

#include "CorvantileLocalStore/LocalStore.hpp"

#include <utility>

namespace corvantile {

LocalStoreClock::LocalStoreClock(std::shared_ptr<LocalStore> store, std::shared_ptr<const Clock> device)
    : store_(std::move(store)), device_(std::move(device)) {}
LocalStoreClock::~LocalStoreClock() = default;

Date LocalStoreClock::now() const { return store_->timeForApp(); }
Date LocalStoreClock::deviceNow() const { return device_->now(); }
std::chrono::seconds LocalStoreClock::localOffset(Date date) const { return device_->localOffset(date); }

} // namespace corvantile
