#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/detail/CalendarText.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace corvantile {

namespace {

using Milliseconds = std::chrono::milliseconds;

// The calendar counts years in 16 bits: dates beyond share a text with the last one, and what is no number
// with the first.
constexpr double farthest = 1e15; // milliseconds, some 31,700 years

// Half a microsecond is added first: a millisecond that doubles cannot hold exactly must not be cut to the
// one before.
Milliseconds unixMilliseconds(Date date) {
    const double milliseconds = std::floor(date.secondsSinceUnixEpoch() * 1000.0 + 0.0005);
    const double shown = milliseconds > -farthest ? std::min(milliseconds, farthest) : -farthest;
    return Milliseconds(static_cast<std::int64_t>(shown));
}

std::string calendarText(Milliseconds sinceEpoch, bool showMilliseconds) {
    const auto day = std::chrono::floor<std::chrono::days>(sinceEpoch);
    const std::chrono::year_month_day date{std::chrono::sys_days(day)};
    const std::chrono::hh_mm_ss time(sinceEpoch - day);
    char buffer[64];
    const int length =
        std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                      static_cast<int>(time.seconds().count()));
    std::string text(buffer, static_cast<std::size_t>(length));
    if (!showMilliseconds) return text;
    const int tail =
        std::snprintf(buffer, sizeof buffer, ".%03d", static_cast<int>(time.subseconds().count()));
    return text.append(buffer, static_cast<std::size_t>(tail));
}

} // namespace

std::string describe(Date date) { return calendarText(unixMilliseconds(date), false) + " +0000"; }

std::string timestamp(Date date, std::chrono::seconds offset) {
    return calendarText(unixMilliseconds(date) + offset, true);
}

std::string isoTimestamp(Date date) {
    auto text = timestamp(date, std::chrono::seconds(0));
    text[text.find(' ')] = 'T';
    return text + "Z";
}

} // namespace corvantile
