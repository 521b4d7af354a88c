#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <compare>
#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// A decimal number of up to `maximumDigits` significant digits, as prices are: 4.99 is exactly that. What
// does not fit is rounded, halves away from zero. One number has one form, so 4.90 and 4.9 are the same in
// every way.
class CORVANTILE_API NSDecimalNumber {
public:
    static constexpr int maximumDigits = 38;
    // Of the texts that are read.
    static constexpr int smallestExponent = -128;
    static constexpr int largestExponent = 127;

    // Zero.
    constexpr NSDecimalNumber() = default;
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool>) explicit NSDecimalNumber(Integer value)
        : NSDecimalNumber(magnitude(value), 0, value < 0) {}
    // A binary fraction is no decimal: 4.99 as a double is another number. Use `fromText`.
    explicit NSDecimalNumber(double) = delete;
    // mantissa * 10^exponent, negated on demand.
    NSDecimalNumber(std::uint64_t mantissa, int exponent, bool isNegative);

    // `-12.50`, `.5`, `3e-2`: a point whatever the locale, no blanks, no grouping; nullopt for anything else.
    [[nodiscard]] static std::optional<NSDecimalNumber> fromText(std::string_view text);

    [[nodiscard]] constexpr bool isZero() const { return high_ == 0 && low_ == 0; }
    [[nodiscard]] constexpr bool isNegative() const { return isNegative_; }

    // The nearest double.
    [[nodiscard]] double doubleValue() const;

    // All digits, no exponent, no trailing zeros: `4.99`, `-0.5`, `100`.
    [[nodiscard]] std::string description() const;

    [[nodiscard]] NSDecimalNumber operator-() const;
    // Where a sum needs more digits, the smaller number is first rounded to the last one that the larger can
    // have.
    [[nodiscard]] NSDecimalNumber operator+(const NSDecimalNumber& other) const;
    [[nodiscard]] NSDecimalNumber operator-(const NSDecimalNumber& other) const { return *this + -other; }

    [[nodiscard]] constexpr bool operator==(const NSDecimalNumber& other) const = default;
    [[nodiscard]] std::strong_ordering operator<=>(const NSDecimalNumber& other) const;

private:
    struct Parts;
    explicit NSDecimalNumber(const Parts& parts);
    [[nodiscard]] Parts parts() const;

    template <class Integer>
    static constexpr std::uint64_t magnitude(Integer value) {
        const auto bits = static_cast<std::uint64_t>(value);
        return value < 0 ? 0 - bits : bits;
    }

    // The mantissa's halves. It has no trailing zero, and a zero is neither negative nor scaled.
    std::uint64_t high_ = 0;
    std::uint64_t low_ = 0;
    std::int32_t exponent_ = 0;
    bool isNegative_ = false;
};

[[nodiscard]] CORVANTILE_API std::string describe(const NSDecimalNumber& number);

} // namespace corvantile
