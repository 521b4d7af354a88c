#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"

#include "CorvantilePlatform/Platform.hpp"

#include <algorithm>

namespace corvantile {

namespace {

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase) {
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
}

} // namespace

NSUserDefaults::~NSUserDefaults() = default;

std::shared_ptr<NSUserDefaults> NSUserDefaults::standardUserDefaults() {
    return Platform::current().ports().userDefaults;
}

std::optional<std::string> NSUserDefaults::stringForKey(std::string_view key) const {
    auto value = valueForKey(key);
    if (!value) return std::nullopt;
    if (const bool* const boolean = std::get_if<bool>(&*value)) return *boolean ? "1" : "0";
    return std::get<std::string>(*std::move(value));
}

bool NSUserDefaults::boolForKey(std::string_view key) const {
    const auto value = valueForKey(key);
    if (!value) return false;
    if (const bool* const boolean = std::get_if<bool>(&*value)) return *boolean;
    const auto& text = std::get<std::string>(*value);
    return text == "1" || equalsIgnoringCase(text, "yes") || equalsIgnoringCase(text, "true");
}

} // namespace corvantile
