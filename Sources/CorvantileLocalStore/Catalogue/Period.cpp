#include "CorvantileLocalStore/Catalogue/Period.hpp"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>

namespace corvantile {

namespace {

constexpr std::string_view unitLetters = "DWMY";
constexpr int mostPeriods = 9999;
constexpr double secondsPerDay = 86400;

Date monthsAfter(Date start, int months) {
    namespace chrono = std::chrono;
    const double sinceEpoch = start.secondsSinceUnixEpoch();
    const double day = std::floor(sinceEpoch / secondsPerDay);
    const chrono::year_month_day date{chrono::sys_days{chrono::days(static_cast<std::int32_t>(day))}};
    const auto month = chrono::year_month(date.year(), date.month()) + chrono::months(months);
    const auto last = chrono::year_month_day_last(month.year(), chrono::month_day_last(month.month())).day();
    const chrono::sys_days moved{month / (date.day() < last ? date.day() : last)};
    const auto movedDay = static_cast<double>(moved.time_since_epoch().count());
    return Date::fromUnixSeconds(sinceEpoch + (movedDay - day) * secondsPerDay);
}

} // namespace

std::optional<Period> periodFromText(std::string_view text) {
    if (text.size() < 3 || text.front() != 'P') return std::nullopt;
    const auto unit = unitLetters.find(text.back());
    if (unit == std::string_view::npos) return std::nullopt;
    Period period{0, static_cast<PeriodUnit>(unit)};
    const char* const end = text.data() + text.size() - 1;
    const auto [rest, error] = std::from_chars(text.data() + 1, end, period.count);
    if (error != std::errc() || rest != end || period.count < 1 || period.count > mostPeriods)
        return std::nullopt;
    return period;
}

std::string describe(Period period) {
    return "P" + std::to_string(period.count) + unitLetters[static_cast<std::size_t>(period.unit)];
}

Date after(Date start, Period period, int times) {
    const int count = period.count * times;
    switch (period.unit) {
    case PeriodUnit::day: return start + std::chrono::hours(24) * count;
    case PeriodUnit::week: return start + std::chrono::hours(168) * count;
    case PeriodUnit::month: return monthsAfter(start, count);
    case PeriodUnit::year: return monthsAfter(start, 12 * count);
    }
    return start;
}

int roughDays(Period period) {
    switch (period.unit) {
    case PeriodUnit::day: return period.count;
    case PeriodUnit::week: return 7 * period.count;
    case PeriodUnit::month: return 30 * period.count;
    case PeriodUnit::year: return 365 * period.count;
    }
    return 0;
}

} // namespace corvantile
