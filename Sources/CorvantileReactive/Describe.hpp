#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <concepts>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace corvantile::rx {

// How the debug operator shows an element. A type of one's own takes part by a free function
// `std::string describe(const Type&)` in its namespace; without one its `typeName`, or "(...)", stands for
// it.
template <class T>
[[nodiscard]] std::string describeValue(const T& value);

namespace detail {

// Inside a container or an optional, text is quoted.
template <class T>
[[nodiscard]] std::string describeNested(const T& value) {
    if constexpr (std::is_convertible_v<const T&, std::string_view>)
        return debugText(value);
    else
        return describeValue(value);
}

template <class T>
struct Describe {
    static std::string text(const T& value) {
        if constexpr (std::is_same_v<T, bool>)
            return value ? "true" : "false";
        else if constexpr (std::is_integral_v<T>)
            return std::to_string(value);
        else if constexpr (std::is_convertible_v<const T&, std::string_view>)
            return std::string(std::string_view(value));
        else if constexpr (requires {
                               { describe(value) } -> std::convertible_to<std::string>;
                           })
            return describe(value);
        else if constexpr (requires { std::string(T::typeName); })
            return std::string(T::typeName);
        else
            return "(...)";
    }
};

template <>
struct Describe<std::exception_ptr> {
    static std::string text(const std::exception_ptr& error) { return corvantile::describe(error); }
};

template <class T>
struct Describe<std::optional<T>> {
    static std::string text(const std::optional<T>& value) {
        return value ? "Optional(" + describeNested(*value) + ")" : "nil";
    }
};

template <class T>
struct Describe<std::shared_ptr<T>> {
    static std::string text(const std::shared_ptr<T>& value) { return value ? describeValue(*value) : "nil"; }
};

template <class First, class Second>
struct Describe<std::pair<First, Second>> {
    static std::string text(const std::pair<First, Second>& value) {
        return "(" + describeNested(value.first) + ", " + describeNested(value.second) + ")";
    }
};

template <class T>
struct Describe<std::vector<T>> {
    static std::string text(const std::vector<T>& values) {
        std::string list;
        for (const auto& value : values) list.append(list.empty() ? "" : ", ").append(describeNested(value));
        return "[" + list + "]";
    }
};

template <class Key, class Value, class Order>
struct Describe<std::map<Key, Value, Order>> {
    static std::string text(const std::map<Key, Value, Order>& values) {
        if (values.empty()) return "[:]";
        std::string list;
        for (const auto& [key, value] : values)
            list.append(list.empty() ? "" : ", ").append(describeNested(key) + ": " + describeNested(value));
        return "[" + list + "]";
    }
};

} // namespace detail

template <class T>
std::string describeValue(const T& value) {
    return detail::Describe<T>::text(value);
}

} // namespace corvantile::rx
