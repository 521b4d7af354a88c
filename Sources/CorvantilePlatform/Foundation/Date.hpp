#pragma once

#include <chrono>
#include <string>

#include "CorvantilePlatform/Export.hpp"

namespace corvantile {

// A point in time: seconds since 2001-01-01 00:00:00 UTC, as a double, so that JSON keeps it bit for bit.
struct Date {
    double secondsSinceReference = 0;

    // Distance from the Unix epoch to the reference date.
    static constexpr double unixToReference = 978307200.0;

    [[nodiscard]] static constexpr Date fromUnixSeconds(double seconds) {
        return {seconds - unixToReference};
    }
    [[nodiscard]] static constexpr Date fromUnixMilliseconds(double milliseconds) {
        return fromUnixSeconds(milliseconds / 1000.0);
    }
    [[nodiscard]] constexpr double secondsSinceUnixEpoch() const {
        return secondsSinceReference + unixToReference;
    }

    friend constexpr bool operator==(Date, Date) = default;
    friend constexpr auto operator<=>(Date, Date) = default;
};

[[nodiscard]] constexpr Date operator+(Date date, std::chrono::duration<double> interval) {
    return {date.secondsSinceReference + interval.count()};
}

[[nodiscard]] constexpr std::chrono::duration<double> operator-(Date later, Date earlier) {
    return std::chrono::duration<double>(later.secondsSinceReference - earlier.secondsSinceReference);
}

// `2024-01-02 03:04:05 +0000`: UTC, whole seconds, rounded down.
[[nodiscard]] CORVANTILE_API std::string describe(Date date);

} // namespace corvantile
