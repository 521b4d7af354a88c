#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace corvantile {

// An object that only its owner understands, and the text that stands for it on a console.
struct OpaqueObject {
    std::shared_ptr<const void> object;
    std::string description;

    friend bool operator==(const OpaqueObject&, const OpaqueObject&) = default;
};

template <class T>
concept EventInteger = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char>;

// One value in an event's parameters. The kinds are closed, so that a sink sees what it cannot print or
// convert.
class CORVANTILE_API EventValue {
public:
    using Null = std::monostate;
    using List = std::vector<EventValue>;
    using Map = std::map<std::string, EventValue, std::less<>>;
    using Variant = std::variant<Null, std::string, NSDecimalNumber, std::int64_t, double, bool, Date, List,
                                 Map, OpaqueObject>;

    EventValue() = default;
    EventValue(std::nullptr_t) {}
    // Text of any form is text, null if it is not there at all; no pointer ever becomes a boolean.
    EventValue(const char* text) {
        if (text != nullptr) variant_ = std::string(text);
    }
    EventValue(std::string_view text) : variant_(std::string(text)) {}
    EventValue(std::string text) : variant_(std::move(text)) {}
    EventValue(NSDecimalNumber number) : variant_(number) {}
    // An integer beyond 64 signed bits becomes a decimal number.
    template <EventInteger Integer>
    EventValue(Integer number) {
        if (std::in_range<std::int64_t>(number))
            variant_ = static_cast<std::int64_t>(number);
        else
            variant_ = NSDecimalNumber(number);
    }
    template <std::floating_point Real>
    EventValue(Real number) : variant_(static_cast<double>(number)) {}
    template <std::same_as<bool> Boolean>
    EventValue(Boolean boolean) : variant_(boolean) {}
    EventValue(Date date) : variant_(date) {}
    EventValue(List list) : variant_(std::move(list)) {}
    EventValue(Map map) : variant_(std::move(map)) {}
    EventValue(OpaqueObject object) : variant_(std::move(object)) {}

    [[nodiscard]] const Variant& variant() const { return variant_; }

    // Null when the value is of another kind.
    template <class Kind>
    [[nodiscard]] const Kind* as() const {
        return std::get_if<Kind>(&variant_);
    }

    [[nodiscard]] bool operator==(const EventValue& other) const;

    // As inside a printed collection: text in quotes, `["a", 1]`, `["key": 4.99]`, `[:]`.
    [[nodiscard]] std::string description() const;
    // Found for event values only, though much converts to one.
    friend std::string describe(const EventValue& value) { return value.description(); }

private:
    Variant variant_;
};

} // namespace corvantile
