#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

enum class PeriodUnit { day, week, month, year };

// How long a subscription or an offer runs, in calendar units, UTC.
struct Period {
    int count = 1; // positive
    PeriodUnit unit = PeriodUnit::month;

    friend bool operator==(const Period&, const Period&) = default;
};

// `P1W`, `P3D`, `P6M`, `P1Y`: one number and one unit; nullopt for anything else.
[[nodiscard]] CORVANTILE_API std::optional<Period> periodFromText(std::string_view text);
[[nodiscard]] CORVANTILE_API std::string describe(Period period);

// `times` periods after `start`, at the same time of day. A day that the month does not have becomes its last
// one; counted from one start, the day comes back in the next month that has it.
[[nodiscard]] CORVANTILE_API Date after(Date start, Period period, int times = 1);

// In days, a month as 30 and a year as 365 of them.
[[nodiscard]] CORVANTILE_API int roughDays(Period period);

} // namespace corvantile
