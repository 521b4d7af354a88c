#include "CorvantileLocalStore/Engine/detail/PacificTime.hpp"

#include <unicode/ucal.h>

namespace corvantile {

namespace {

constexpr std::chrono::hours withoutData{-8};

} // namespace

PacificTime::PacificTime()
    : calendar_([] {
          auto status = U_ZERO_ERROR;
          auto* const opened = ucal_open(u"America/Los_Angeles", -1, "en_US", UCAL_GREGORIAN, &status);
          return U_SUCCESS(status) ? opened : nullptr;
      }()) {}

PacificTime::~PacificTime() = default;

void PacificTime::Close::operator()(void** calendar) const { ucal_close(calendar); }

std::chrono::seconds PacificTime::offset(Date date) {
    if (!calendar_) return withoutData;
    const double milliseconds = date.secondsSinceUnixEpoch() * 1000.0;
    const auto known = seasons_.upper_bound(milliseconds);
    if (known != seasons_.end() && known->second.start <= milliseconds) return known->second.offset;
    double end = 0;
    const auto found = season(milliseconds, end);
    if (end > milliseconds) seasons_.insert_or_assign(end, found);
    return found.offset;
}

PacificTime::Season PacificTime::season(double milliseconds, double& end) const {
    auto status = U_ZERO_ERROR;
    ucal_setMillis(calendar_.get(), milliseconds, &status);
    const auto zone = ucal_get(calendar_.get(), UCAL_ZONE_OFFSET, &status);
    const auto summer = ucal_get(calendar_.get(), UCAL_DST_OFFSET, &status);
    Season found{.start = milliseconds, .offset = withoutData};
    if (U_FAILURE(status)) return found;
    found.offset = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::milliseconds(zone + summer));
    const bool isBetween =
        ucal_getTimeZoneTransitionDate(calendar_.get(), UCAL_TZ_TRANSITION_PREVIOUS_INCLUSIVE, &found.start,
                                       &status) &&
        ucal_getTimeZoneTransitionDate(calendar_.get(), UCAL_TZ_TRANSITION_NEXT, &end, &status);
    if (!isBetween || U_FAILURE(status)) end = milliseconds; // not to be kept
    return found;
}

} // namespace corvantile
