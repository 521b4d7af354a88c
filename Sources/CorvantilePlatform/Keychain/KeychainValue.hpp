#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <concepts>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace corvantile {

using KeychainData = std::vector<std::uint8_t>;

// Every integer type that 64 signed bits hold.
template <class T>
concept KeychainInteger = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> &&
                          std::numeric_limits<T>::digits <= std::numeric_limits<std::int64_t>::digits;

// One value of a keychain entry. The kinds are closed, and each comes back as what it went in: the boolean
// true is not the integer 1.
class CORVANTILE_API KeychainValue {
public:
    using Variant = std::variant<std::string, bool, std::int64_t, double, Date, KeychainData>;

    // Text of any form is text; no pointer ever becomes a boolean.
    KeychainValue(const char* text) : variant_(std::string(text)) {}
    KeychainValue(std::string_view text) : variant_(std::string(text)) {}
    KeychainValue(std::string text) : variant_(std::move(text)) {}
    template <std::same_as<bool> Boolean>
    KeychainValue(Boolean boolean) : variant_(boolean) {}
    template <KeychainInteger Integer>
    KeychainValue(Integer number) : variant_(static_cast<std::int64_t>(number)) {}
    template <std::floating_point Real>
    KeychainValue(Real number) : variant_(static_cast<double>(number)) {}
    KeychainValue(Date date) : variant_(date) {}
    KeychainValue(KeychainData data) : variant_(std::move(data)) {}

    [[nodiscard]] const Variant& variant() const { return variant_; }

    // Null when the value is of another kind.
    template <class Kind>
    [[nodiscard]] const Kind* as() const {
        return std::get_if<Kind>(&variant_);
    }

    friend bool operator==(const KeychainValue&, const KeychainValue&) = default;

private:
    Variant variant_;
};

// What one entry holds. An empty dictionary is an entry all the same.
using KeychainDictionary = std::map<std::string, KeychainValue, std::less<>>;

} // namespace corvantile
