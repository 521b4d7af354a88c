#include "Corvantile/Plugin/Analytic/EventValue.hpp"

#include "Corvantile/Extension/Encodable.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"

namespace corvantile {

namespace {

std::string text(EventValue::Null) { return "<null>"; }
std::string text(const std::string& value) { return debugText(value); }
std::string text(const NSDecimalNumber& value) { return value.description(); }
std::string text(std::int64_t value) { return std::to_string(value); }
std::string text(double value) { return detail::realText(value); }
std::string text(bool value) { return value ? "true" : "false"; }
std::string text(Date value) { return describe(value); }
std::string text(const OpaqueObject& value) { return value.description; }

std::string text(const EventValue::List& list) {
    std::string members;
    for (const auto& member : list) members.append(members.empty() ? "" : ", ").append(member.description());
    return "[" + members + "]";
}

std::string text(const EventValue::Map& map) {
    std::string members;
    for (const auto& [key, value] : map)
        members.append(members.empty() ? "" : ", ").append(debugText(key) + ": " + value.description());
    return members.empty() ? "[:]" : "[" + members + "]";
}

} // namespace

bool EventValue::operator==(const EventValue& other) const { return variant_ == other.variant_; }

std::string EventValue::description() const {
    return std::visit([](const auto& value) { return text(value); }, variant_);
}

} // namespace corvantile
