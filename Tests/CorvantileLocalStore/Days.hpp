#pragma once

#include "CorvantilePlatform/Foundation/detail/CalendarText.hpp"

#include <ctime>
#include <iomanip>
#include <sstream>

namespace corvantile {

// So long after the midnight that begins `day`, such as `2024-01-31`, in UTC.
inline Date onDay(const std::string& day, std::chrono::seconds timeOfDay) {
    std::tm midnight{};
    std::istringstream(day) >> std::get_time(&midnight, "%Y-%m-%d");
    return Date::fromUnixSeconds(static_cast<double>(::timegm(&midnight))) + timeOfDay;
}

inline std::string dayOf(Date date) { return timestamp(date, std::chrono::seconds(0)).substr(0, 10); }

} // namespace corvantile
