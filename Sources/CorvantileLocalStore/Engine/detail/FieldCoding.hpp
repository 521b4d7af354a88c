#pragma once

#include "CorvantileLocalStore/Engine/StoreRecords.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

// How the fields of the store's records become JSON, and back. For sources only: it brings the JSON library
// along. What is read throws nlohmann::json::exception.
namespace corvantile::fieldcoding {

using Object = nlohmann::ordered_json;

// Enumerators are written by name: a number would say something else when one is added.
template <class Value>
inline constexpr std::array<std::string_view, 0> names{};
template <>
inline constexpr std::array<std::string_view, 4> names<ProductKind>{"consumable", "nonConsumable",
                                                                    "nonRenewing", "autoRenewing"};
template <>
inline constexpr std::array<std::string_view, 5> names<SKPaymentTransactionState>{
    "purchasing", "purchased", "failed", "restored", "deferred"};
template <>
inline constexpr std::array<std::string_view, 5> names<SubscriptionStatus>{
    "active", "gracePeriod", "billingRetry", "expired", "revoked"};

template <>
inline constexpr std::array<std::string_view, 3> names<PaymentDecision>{"fails", "isDeferred", "isHeld"};

template <class Value>
inline constexpr bool isNamed = !names<Value>.empty();

inline Object encoded(Date date) { return date.secondsSinceReference; }
inline Object encoded(const NSDecimalNumber& number) { return number.description(); }
inline Object encoded(const StoreFailure& failure) {
    return {{"code", static_cast<int>(failure.code)}, {"message", failure.message}};
}
template <class Value>
Object encoded(const Value& value) {
    if constexpr (isNamed<Value>)
        return names<Value>.at(static_cast<std::size_t>(value));
    else if constexpr (std::is_enum_v<Value>)
        return static_cast<int>(value);
    else
        return value;
}

inline void decode(const Object& from, Date& to) { to = {from.get<double>()}; }
inline void decode(const Object& from, NSDecimalNumber& to) {
    const auto number = NSDecimalNumber::fromText(from.get_ref<const std::string&>());
    if (!number) throw Object::other_error::create(501, "not a decimal", &from);
    to = *number;
}
inline void decode(const Object& from, StoreFailure& to) {
    to = {static_cast<SKErrorCode>(from.at("code").get<int>()), from.at("message").get<std::string>()};
}
template <class Value>
void decode(const Object& from, Value& to) {
    if constexpr (isNamed<Value>) {
        const auto& all = names<Value>;
        const auto found = std::find(all.begin(), all.end(), from.get_ref<const std::string&>());
        if (found == all.end()) throw Object::other_error::create(501, "no known name", &from);
        to = static_cast<Value>(found - all.begin());
    } else if constexpr (std::is_enum_v<Value>) {
        to = static_cast<Value>(from.get<int>());
    } else {
        to = from.get<Value>();
    }
}

// One list of fields serves both ways: `visit(visitor, record)` names each with its member.
class Writer {
public:
    template <class Value>
    void operator()(const char* key, const Value& value) {
        object_[key] = encoded(value);
    }
    template <class Value>
    void operator()(const char* key, const std::optional<Value>& value) {
        if (value) object_[key] = encoded(*value);
    }
    [[nodiscard]] const Object& object() const { return object_; }
    [[nodiscard]] std::string text() const {
        return object_.dump(-1, ' ', false, Object::error_handler_t::replace);
    }

private:
    Object object_ = Object::object();
};

class Reader {
public:
    explicit Reader(const Object& object) : object_(object) {}
    template <class Value>
    void operator()(const char* key, Value& value) const {
        decode(object_.at(key), value);
    }
    template <class Value>
    void operator()(const char* key, std::optional<Value>& value) const {
        if (const auto found = object_.find(key); found != object_.end()) decode(*found, value.emplace());
    }

private:
    const Object& object_;
};

} // namespace corvantile::fieldcoding
