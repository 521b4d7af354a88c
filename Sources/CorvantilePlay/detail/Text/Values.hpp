#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"
#include "CorvantilePlay/detail/Text/Words.hpp"

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// What people write in commands, as the framework's values. What cannot be read is a UsageError.

namespace corvantile::tool {

// `true` and `false` are booleans, `3` an integer, `4.99` a decimal number, `2024-01-02` and
// `2024-01-02T03:04:05Z` dates (UTC); everything else is text, as is a number that JSON would not write, like
// 007.
[[nodiscard]] EventValue parseValue(std::string_view text);

// `KEY=VALUE` words; a VALUE in quotes is text whatever it looks like, and a KEY in quotes may hold a `=`.
// The single word `{}` is an empty map, no word at all no map.
[[nodiscard]] std::optional<EventParameters> parseParameters(std::span<const Word> words);

[[nodiscard]] NSDecimalNumber parseAmount(std::string_view text);

// Three capital letters, or nothing at all.
[[nodiscard]] std::string parseCurrency(std::string_view text);

// `500ms`, `1.5s`, `2m`; a day at most.
[[nodiscard]] std::chrono::milliseconds parseDuration(std::string_view text);

// `2024-01-02T03:04:05Z`: UTC, whole seconds, rounded down.
[[nodiscard]] std::string isoText(Date date);

// The value, and the parameters, as a command would write them.
[[nodiscard]] std::string describeValue(const EventValue& value);
[[nodiscard]] std::string describeParameters(const EventParameters& parameters);

struct Revenue {
    NSDecimalNumber amount;
    std::string currency;
};

// `purchase 4.99 USD connection_status=wifi`: an event as the command that tracks it would write it.
[[nodiscard]] std::string describeEvent(const AnalyticEvent& event,
                                        const std::optional<Revenue>& revenue = {});

// The same for programs: "event", "params" if there are any, "revenue" and "currency" if it carries them.
[[nodiscard]] EventValue::Map fieldsOf(const AnalyticEvent& event,
                                       const std::optional<Revenue>& revenue = {});

} // namespace corvantile::tool
