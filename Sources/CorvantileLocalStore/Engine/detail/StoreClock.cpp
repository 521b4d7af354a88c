#include "CorvantileLocalStore/Engine/detail/StoreClock.hpp"

#include <algorithm>
#include <cmath>

namespace corvantile {

namespace {

constexpr std::chrono::duration<double> forEver{3e9}; // some ninety years, which fit into nanoseconds

Date nextWholeMillisecond(Date date) {
    const auto before = wholeMilliseconds(date);
    return before < date ? before + std::chrono::milliseconds(1) : date;
}

} // namespace

Date wholeMilliseconds(Date date) {
    // What doubles cannot hold exactly must not be cut to the millisecond before.
    return Date::fromUnixMilliseconds(std::floor(date.secondsSinceUnixEpoch() * 1000.0 + 0.01));
}

// Earlier versions wrote down times between two milliseconds. What was dated by one must not be in the future
// when the clock jumps by exactly its period.
StoreClock::StoreClock(const StoreClockSetting& setting) : setting_(setting) {
    setting_.seen = nextWholeMillisecond(setting_.seen);
}

StoreClock::StoreClock(Date device, Date start, double rate)
    : setting_{.device = device, .store = wholeMilliseconds(start), .rate = rate} {
    setting_.seen = setting_.store;
}

Date StoreClock::at(Date device) {
    const auto shown = wholeMilliseconds(setting_.store + (device - setting_.device) * setting_.rate);
    if (shown < setting_.seen) {
        // The device's clock was set back: ours goes on from where it was.
        setting_.device = device;
        setting_.store = setting_.seen;
    }
    setting_.seen = std::max(setting_.seen, shown);
    return setting_.seen;
}

void StoreClock::advance(Date device, std::chrono::duration<double> duration) {
    setting_.store = at(device) + duration;
    setting_.device = device;
}

void StoreClock::setRate(Date device, double rate) {
    advance(device, std::chrono::duration<double>::zero());
    setting_.rate = rate;
}

std::chrono::nanoseconds StoreClock::until(Date store, Date device) {
    const auto wait = std::max(std::chrono::duration<double>::zero(), store - at(device));
    const auto real = setting_.rate > 0 ? std::min(forEver, wait / setting_.rate) : forEver;
    // Rounded up: a moment too early finds nothing due.
    return std::chrono::ceil<std::chrono::microseconds>(real);
}

} // namespace corvantile
