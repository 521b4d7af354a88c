#include "CorvantileIAP/detail/StoreDate.hpp"

#include "HostCore/detail/JSON.hpp"

#include <chrono>
#include <cmath>

namespace corvantile {

namespace {

namespace ch = std::chrono;

// Takes what it reads off the front of the text.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    // Exactly so many digits; -1 when they are not there.
    int digits(std::size_t count) {
        int number = 0;
        if (rest_.size() < count) return -1;
        for (std::size_t i = 0; i < count; ++i) {
            if (rest_[i] < '0' || rest_[i] > '9') return -1;
            number = number * 10 + (rest_[i] - '0');
        }
        rest_.remove_prefix(count);
        return number;
    }

    bool skip(std::string_view oneOf) {
        if (rest_.empty() || oneOf.find(rest_.front()) == std::string_view::npos) return false;
        rest_.remove_prefix(1);
        return true;
    }

    [[nodiscard]] std::string_view rest() const { return rest_; }

private:
    std::string_view rest_;
};

// The store's own zone, by the rule in force since before it opened.
ch::seconds pacificOffset(ch::sys_seconds local) {
    using namespace std::chrono_literals;
    const auto year = ch::year_month_day(ch::floor<ch::days>(local)).year();
    const ch::sys_seconds summer = ch::sys_days(year / ch::March / ch::Sunday[2]) + 2h;
    const ch::sys_seconds winter = ch::sys_days(year / ch::November / ch::Sunday[1]) + 2h;
    return summer <= local && local < winter ? -7h : -8h;
}

// `+01:00`, `-0800`.
std::optional<ch::seconds> numericOffset(std::string_view zone) {
    Scanner scanner(zone);
    const bool isWest = zone.starts_with('-');
    if (!scanner.skip("+-")) return std::nullopt;
    const int hours = scanner.digits(2);
    scanner.skip(":");
    const int minutes = scanner.digits(2);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || !scanner.rest().empty())
        return std::nullopt;
    const ch::seconds offset = ch::hours(hours) + ch::minutes(minutes);
    return isWest ? -offset : offset;
}

std::optional<ch::seconds> offsetOf(std::string_view zone, ch::sys_seconds local) {
    for (const std::string_view utc : {"", "Z", "Etc/GMT", "GMT", "UTC", "Etc/UTC"})
        if (zone == utc) return ch::seconds(0);
    if (zone == "America/Los_Angeles") return pacificOffset(local);
    return numericOffset(zone);
}

std::optional<Date> calendarDate(std::string_view text) {
    Scanner scanner(text);
    const int year = scanner.digits(4);
    scanner.skip("-");
    const int month = scanner.digits(2);
    scanner.skip("-");
    const int day = scanner.digits(2);
    if (!scanner.skip(" T")) return std::nullopt;
    const int hour = scanner.digits(2);
    scanner.skip(":");
    const int minute = scanner.digits(2);
    scanner.skip(":");
    const int second = scanner.digits(2);
    if (year < 0 || month < 0 || day < 0 || hour < 0 || minute < 0 || second < 0) return std::nullopt;
    if (scanner.skip("."))
        while (scanner.digits(1) >= 0) {
        } // the store knows whole seconds
    scanner.skip(" ");

    const ch::year_month_day date(ch::year(year), ch::month(static_cast<unsigned>(month)),
                                  ch::day(static_cast<unsigned>(day)));
    if (!date.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;
    const ch::sys_seconds local =
        ch::sys_days(date) + ch::hours(hour) + ch::minutes(minute) + ch::seconds(second);
    const auto offset = offsetOf(scanner.rest(), local);
    if (!offset) return std::nullopt;
    return Date::fromUnixSeconds(static_cast<double>((local - *offset).time_since_epoch().count()));
}

} // namespace

std::optional<Date> readStoreMilliseconds(double milliseconds) {
    constexpr double farthest = 1e15; // some 31,700 years
    if (!(std::abs(milliseconds) <= farthest)) return std::nullopt;
    return Date::fromUnixMilliseconds(milliseconds);
}

std::optional<Date> readStoreDate(std::string_view text) {
    if (const auto milliseconds = textInteger(text))
        return readStoreMilliseconds(static_cast<double>(*milliseconds));
    return calendarDate(text);
}

} // namespace corvantile
