#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <system_error>
#include <utility>

namespace corvantile {

namespace {

__extension__ typedef unsigned __int128 Mantissa; // room for 38 digits and a carry

constexpr Mantissa limit = [] {
    Mantissa value = 1;
    for (int i = 0; i < NSDecimalNumber::maximumDigits; ++i) value *= 10;
    return value;
}();

std::string digitsOf(Mantissa mantissa) {
    std::string digits;
    for (; mantissa != 0; mantissa /= 10) digits += static_cast<char>('0' + static_cast<int>(mantissa % 10));
    std::reverse(digits.begin(), digits.end());
    return digits;
}

// mantissa / 10^count, halves rounded up.
Mantissa shiftedRight(Mantissa mantissa, std::int64_t count) {
    if (count > NSDecimalNumber::maximumDigits + 1) return 0;
    Mantissa last = 0;
    for (; count > 0; --count) {
        last = mantissa % 10;
        mantissa /= 10;
    }
    return last >= 5 ? mantissa + 1 : mantissa;
}

bool takeSign(std::string_view& text) {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    return isNegative;
}

std::string_view takeDigits(std::string_view& text) {
    const auto digits = text.substr(0, text.find_first_not_of("0123456789"));
    text.remove_prefix(digits.size());
    return digits;
}

// The exponent that ends a number's text; nothing stands for none.
std::optional<int> exponentOf(std::string_view text) {
    if (text.empty()) return 0;
    if (text.front() != 'e' && text.front() != 'E') return std::nullopt;
    text.remove_prefix(1);
    const bool isNegative = takeSign(text);
    const auto digits = takeDigits(text);
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (digits.empty() || !text.empty() || error != std::errc()) return std::nullopt;
    return isNegative ? -value : value;
}

} // namespace

struct NSDecimalNumber::Parts {
    Mantissa mantissa = 0;
    std::int64_t exponent = 0;
    bool isNegative = false;

    // Digits beyond the limit are rounded away.
    static Parts ofDigits(std::string_view digits) {
        Parts parts;
        digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
        const auto kept = std::min<std::size_t>(digits.size(), maximumDigits);
        for (const char digit : digits.substr(0, kept))
            parts.mantissa = parts.mantissa * 10 + static_cast<unsigned>(digit - '0');
        if (kept < digits.size() && digits[kept] >= '5') ++parts.mantissa;
        parts.exponent = static_cast<std::int64_t>(digits.size() - kept);
        return parts;
    }

    // The one form of this number.
    [[nodiscard]] Parts normalised() const {
        if (mantissa == 0) return {};
        auto result = *this;
        if (result.mantissa >= limit) {
            result.mantissa = shiftedRight(result.mantissa, 1);
            ++result.exponent;
        }
        for (; result.mantissa % 10 == 0; result.mantissa /= 10) ++result.exponent;
        return result;
    }

    // Gives it more digits, as many as there is room for, to bring its exponent down to `other`.
    void scaleTowards(std::int64_t other) {
        for (; exponent > other && mantissa < limit / 10; --exponent) mantissa *= 10;
    }

    // Same number of digits for every mantissa but zero's, so that the exponents decide first.
    void scaleFully() { scaleTowards(std::numeric_limits<std::int64_t>::min()); }
};

NSDecimalNumber::NSDecimalNumber(std::uint64_t mantissa, int exponent, bool isNegative)
    : NSDecimalNumber(Parts{mantissa, exponent, isNegative}) {}

NSDecimalNumber::NSDecimalNumber(const Parts& parts) {
    const auto one = parts.normalised();
    high_ = static_cast<std::uint64_t>(one.mantissa >> 64);
    low_ = static_cast<std::uint64_t>(one.mantissa);
    exponent_ = static_cast<std::int32_t>(one.exponent);
    isNegative_ = one.isNegative;
}

NSDecimalNumber::Parts NSDecimalNumber::parts() const {
    return {static_cast<Mantissa>(high_) << 64 | low_, exponent_, isNegative_};
}

std::optional<NSDecimalNumber> NSDecimalNumber::fromText(std::string_view text) {
    const bool isNegative = takeSign(text);
    std::string digits(takeDigits(text));
    std::size_t fractionDigits = 0;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        const auto fraction = takeDigits(text);
        digits.append(fraction);
        fractionDigits = fraction.size();
    }
    const auto exponent = exponentOf(text);
    if (digits.empty() || !exponent) return std::nullopt;

    auto parts = Parts::ofDigits(digits);
    parts.exponent += *exponent - static_cast<std::int64_t>(fractionDigits);
    parts.isNegative = isNegative;
    parts = parts.normalised();
    if (parts.exponent < smallestExponent || parts.exponent > largestExponent) return std::nullopt;
    return NSDecimalNumber(parts);
}

double NSDecimalNumber::doubleValue() const {
    const auto text = digitsOf(parts().mantissa) + "e" + std::to_string(exponent_);
    const auto number = nlohmann::json::parse(isZero() ? "0.0" : text, nullptr, false);
    const double value = number.is_number() ? number.get<double>() : std::numeric_limits<double>::infinity();
    return isNegative_ ? -value : value;
}

std::string NSDecimalNumber::description() const {
    if (isZero()) return "0";
    auto digits = digitsOf(parts().mantissa);
    if (exponent_ >= 0) {
        digits.append(static_cast<std::size_t>(exponent_), '0');
    } else {
        const auto fractionDigits = static_cast<std::size_t>(-exponent_);
        if (digits.size() <= fractionDigits) digits.insert(0, fractionDigits + 1 - digits.size(), '0');
        digits.insert(digits.size() - fractionDigits, ".");
    }
    return isNegative_ ? "-" + digits : digits;
}

NSDecimalNumber NSDecimalNumber::operator-() const {
    auto result = *this;
    result.isNegative_ = !isZero() && !isNegative_;
    return result;
}

NSDecimalNumber NSDecimalNumber::operator+(const NSDecimalNumber& other) const {
    auto sum = parts();
    auto addend = other.parts();
    if (sum.exponent < addend.exponent) std::swap(sum, addend);
    sum.scaleTowards(addend.exponent);
    addend.mantissa = shiftedRight(addend.mantissa, sum.exponent - addend.exponent);
    if (sum.isNegative == addend.isNegative) {
        sum.mantissa += addend.mantissa;
    } else if (sum.mantissa >= addend.mantissa) {
        sum.mantissa -= addend.mantissa;
    } else {
        sum.mantissa = addend.mantissa - sum.mantissa;
        sum.isNegative = addend.isNegative;
    }
    return NSDecimalNumber(sum);
}

std::strong_ordering NSDecimalNumber::operator<=>(const NSDecimalNumber& other) const {
    const auto signOf = [](const NSDecimalNumber& number) {
        return number.isZero() ? 0 : number.isNegative() ? -1 : 1;
    };
    if (const auto order = signOf(*this) <=> signOf(other); order != 0 || isZero()) return order;
    auto a = parts();
    auto b = other.parts();
    if (a.isNegative) std::swap(a, b);
    a.scaleFully();
    b.scaleFully();
    if (const auto order = a.exponent <=> b.exponent; order != 0) return order;
    return a.mantissa < b.mantissa   ? std::strong_ordering::less
           : a.mantissa > b.mantissa ? std::strong_ordering::greater
                                     : std::strong_ordering::equal;
}

std::string describe(const NSDecimalNumber& number) { return number.description(); }

} // namespace corvantile
