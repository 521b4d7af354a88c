#include "CorvantilePlay/detail/Text/Values.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "HostCore/detail/JSON.hpp"

#include <algorithm>
#include <cstdint>

namespace corvantile::tool {

namespace {

using std::string_view;

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// Takes the digits at the beginning of `text`, and tells how many there were.
std::size_t takeDigits(string_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
    const auto count = static_cast<std::size_t>(end - text.begin());
    text.remove_prefix(count);
    return count;
}

bool take(string_view& text, string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

// As JSON writes numbers.
bool isNumber(string_view text) {
    take(text, "-");
    if (!take(text, "0") && takeDigits(text) == 0) return false;
    if (take(text, ".") && takeDigits(text) == 0) return false;
    if (take(text, "e") || take(text, "E")) {
        if (!take(text, "-")) take(text, "+");
        if (takeDigits(text) == 0) return false;
    }
    return text.empty();
}

std::optional<EventValue> parseNumber(string_view text) {
    if (!isNumber(text)) return std::nullopt;
    if (const auto integer = textInteger(text)) return EventValue(*integer);
    if (const auto decimal = NSDecimalNumber::fromText(text)) return EventValue(*decimal);
    return std::nullopt;
}

// Whether `text` has the form of `shape`, in which a 0 stands for any digit.
bool hasShape(string_view text, string_view shape) {
    return std::equal(text.begin(), text.end(), shape.begin(), shape.end(), [](char character, char wanted) {
        return wanted == '0' ? isDigit(character) : character == wanted;
    });
}

int number(string_view text, std::size_t at, std::size_t count) {
    return static_cast<int>(*textInteger(text.substr(at, count)));
}

std::optional<Date> parseDate(string_view text) {
    namespace chrono = std::chrono;
    const bool hasTime = hasShape(text, "0000-00-00T00:00:00Z");
    if (!hasTime && !hasShape(text, "0000-00-00")) return std::nullopt;
    const chrono::year_month_day day(chrono::year(number(text, 0, 4)),
                                     chrono::month(static_cast<unsigned>(number(text, 5, 2))),
                                     chrono::day(static_cast<unsigned>(number(text, 8, 2))));
    if (!day.ok()) return std::nullopt;
    const chrono::duration<double> midnight = chrono::sys_days(day).time_since_epoch();
    const auto moment = Date::fromUnixSeconds(midnight.count());
    if (!hasTime) return moment;
    const int hour = number(text, 11, 2), minute = number(text, 14, 2), second = number(text, 17, 2);
    if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
    return moment + chrono::seconds(3600 * hour + 60 * minute + second);
}

// Text that a command may write without quotes, behind a `=`.
bool isBare(string_view text) {
    const auto isBlank = [](char character) { return static_cast<unsigned char>(character) <= ' '; };
    return !text.empty() && std::none_of(text.begin(), text.end(), isBlank) &&
           text.find_first_of("\"'\x7F") == string_view::npos;
}

// As splitWords reads it back.
std::string inQuotes(string_view text) {
    std::string out = "\"";
    for (const char character : text) {
        switch (character) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\t': out += "\\t"; break;
        default: out += character;
        }
    }
    return out + '"';
}

std::string describeText(string_view text) {
    const bool isReadAsText = parseValue(text).as<std::string>() != nullptr;
    return isBare(text) && isReadAsText ? std::string(text) : inQuotes(text);
}

std::string describeKey(string_view key) {
    const bool isRead = !key.starts_with('#') && key.find('=') == string_view::npos;
    return isBare(key) && isRead ? std::string(key) : inQuotes(key);
}

std::string inQuotationMarks(string_view text) { return "\"" + std::string(text) + "\""; }

} // namespace

EventValue parseValue(string_view text) {
    if (text == "true" || text == "false") return text == "true";
    if (const auto parsed = parseNumber(text)) return *parsed;
    if (const auto date = parseDate(text)) return *date;
    return text;
}

std::optional<EventParameters> parseParameters(std::span<const Word> words) {
    if (words.empty()) return std::nullopt;
    if (words.size() == 1 && words[0].text == "{}") return EventParameters{};
    EventParameters parameters;
    for (const auto& word : words) {
        const auto& text = word.text;
        const auto equals = word.equals == std::string::npos ? text.find('=') : word.equals;
        if (equals == std::string::npos || equals == 0) throw unexpectedValue("KEY=VALUE, such as n=3", text);
        const auto key = text.substr(0, equals);
        const auto value = text.substr(equals + 1);
        if (!parameters.emplace(key, word.isValueQuoted ? EventValue(value) : parseValue(value)).second)
            throw UsageError("the key " + inQuotationMarks(key) + " is there twice");
    }
    return parameters;
}

NSDecimalNumber parseAmount(string_view text) {
    if (const auto amount = NSDecimalNumber::fromText(text)) return *amount;
    throw unexpectedValue("an amount with a point, such as 4.99", text);
}

std::string parseCurrency(string_view text) {
    const auto isCapital = [](char letter) { return letter >= 'A' && letter <= 'Z'; };
    const bool isCode = text.size() == 3 && std::all_of(text.begin(), text.end(), isCapital);
    if (text.empty() || isCode) return std::string(text);
    throw unexpectedValue("a currency of three capital letters, such as USD", text);
}

std::chrono::milliseconds parseDuration(string_view text) {
    static constexpr struct {
        string_view name;
        double milliseconds;
    } units[] = {{"ms", 1}, {"s", 1000}, {"m", 60000}, {"h", 3600000}};
    const auto numberEnd = std::min(text.find_first_not_of("0123456789."), text.size());
    const auto amount = NSDecimalNumber::fromText(text.substr(0, numberEnd));
    for (const auto& unit : units) {
        if (!amount || text.substr(numberEnd) != unit.name) continue;
        const double milliseconds = amount->doubleValue() * unit.milliseconds;
        if (milliseconds > 86400000) throw UsageError("a wait lasts a day at most, not " + std::string(text));
        return std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds));
    }
    throw unexpectedValue("a duration, such as 500ms, 1.5s or 2m", text);
}

std::string isoText(Date date) {
    auto text = describe(date); // 2024-01-02 03:04:05 +0000
    text.replace(text.size() - 6, 6, "Z");
    text[text.size() - 10] = 'T';
    return text;
}

std::string describeValue(const EventValue& value) {
    if (const auto* const date = value.as<Date>()) return isoText(*date);
    if (const auto* const text = value.as<std::string>()) return describeText(*text);
    return value.description();
}

std::string describeParameters(const EventParameters& parameters) {
    if (parameters.empty()) return "{}";
    std::string text;
    for (const auto& [key, value] : parameters)
        text.append(text.empty() ? "" : " ")
            .append(describeKey(key))
            .append("=")
            .append(describeValue(value));
    return text;
}

std::string describeEvent(const AnalyticEvent& event, const std::optional<Revenue>& revenue) {
    auto text = event.name;
    if (revenue) text += " " + revenue->amount.description() + " " + revenue->currency;
    if (event.params && !event.params->empty()) text += " " + describeParameters(*event.params);
    return text;
}

EventValue::Map fieldsOf(const AnalyticEvent& event, const std::optional<Revenue>& revenue) {
    EventValue::Map fields{{"event", event.name}};
    if (event.params) fields.emplace("params", *event.params);
    if (revenue) fields.emplace("revenue", revenue->amount);
    if (revenue) fields.emplace("currency", revenue->currency);
    return fields;
}

} // namespace corvantile::tool
