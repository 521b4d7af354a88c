#include "CorvantileDesktop/Adjust/detail/RetryWait.hpp"

#include <algorithm>
#include <cmath>

namespace corvantile {

namespace {

using std::chrono::milliseconds;

struct Waits {
    milliseconds first;
    milliseconds longest;
};

constexpr Waits ordinary{std::chrono::seconds(120), std::chrono::hours(24)};
constexpr Waits ofFirstSession{milliseconds(200), std::chrono::hours(1)};

} // namespace

milliseconds waitAfter(int failures, bool isFirstSession, double fraction) {
    const auto& waits = isFirstSession ? ofFirstSession : ordinary;
    const double doubled = std::ldexp(static_cast<double>(waits.first.count()), failures - 1);
    const double wait = std::min(doubled, static_cast<double>(waits.longest.count()));
    return milliseconds(std::llround(wait * fraction));
}

} // namespace corvantile
