#pragma once

#include "CorvantileLocalStore/Engine/StoreRecords.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <chrono>

namespace corvantile {

// The last whole millisecond, in the one form in which equal moments are equal numbers.
[[nodiscard]] Date wholeMilliseconds(Date date);

// The store's own time. It follows the device's clock at a rate, jumps on demand, and never goes back, also
// where the device's clock is set back. Whole milliseconds, which is what receipts tell.
class StoreClock {
public:
    explicit StoreClock(const StoreClockSetting& setting);
    // A new one, which shows `start` now, cut to the millisecond.
    StoreClock(Date device, Date start, double rate);

    [[nodiscard]] const StoreClockSetting& setting() const { return setting_; }

    [[nodiscard]] Date at(Date device);
    void advance(Date device, std::chrono::duration<double> duration);
    // Store seconds per second of the device; 0 stops the clock.
    void setRate(Date device, double rate);

    // What the device's clock has to go on until this one shows `store`. For ever when it stands still.
    [[nodiscard]] std::chrono::nanoseconds until(Date store, Date device);

private:
    StoreClockSetting setting_;
};

} // namespace corvantile
