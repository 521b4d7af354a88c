#include "CorvantileDesktop/Foundation/detail/SystemClock.hpp"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace corvantile {

SystemClock::SystemClock() { tzset(); }
SystemClock::~SystemClock() = default;

Date SystemClock::now() const {
    const std::chrono::duration<double> sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date::fromUnixSeconds(sinceEpoch.count());
}

std::chrono::seconds SystemClock::localOffset(Date date) const {
    static constexpr double farthest = 1e15; // thirty million years, which the calendar still counts
    const double seconds = std::floor(date.secondsSinceUnixEpoch());
    if (std::isnan(seconds)) return std::chrono::seconds(0);
    const auto time = static_cast<std::time_t>(std::clamp(seconds, -farthest, farthest));
    std::tm local{};
    if (localtime_r(&time, &local) == nullptr) return std::chrono::seconds(0);
    return std::chrono::seconds(local.tm_gmtoff);
}

} // namespace corvantile
