#pragma once

#include "CorvantilePlatform/Store/SKProduct.hpp"

#include <optional>
#include <string>

namespace corvantile {

// The two-letter code of a storefront, whose code has three letters (`USA`); nullopt when there is no such
// region.
[[nodiscard]] std::optional<std::string> regionOfStorefront(const std::string& storefront);

// Region and currency of a locale such as `de_CH` or `en_US@currency=EUR`, in a region of its own unless
// `region` names another.
[[nodiscard]] PriceLocale priceLocaleOf(const std::string& locale, const std::optional<std::string>& region);

} // namespace corvantile
