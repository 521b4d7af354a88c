#include "CorvantileLocalStore/Catalogue/detail/Storefront.hpp"

#include <unicode/ucurr.h>
#include <unicode/uloc.h>
#include <unicode/uregion.h>

#include <array>

namespace corvantile {

namespace {

using Buffer = std::array<char, ULOC_FULLNAME_CAPACITY>;

// What ICU has written, or nothing.
std::string textOf(const Buffer& buffer, std::int32_t length, UErrorCode status) {
    if (U_FAILURE(status) || length <= 0 || static_cast<std::size_t>(length) >= buffer.size()) return {};
    return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string regionOf(const std::string& locale) {
    Buffer buffer{};
    auto status = U_ZERO_ERROR;
    const auto length =
        uloc_getCountry(locale.c_str(), buffer.data(), static_cast<std::int32_t>(buffer.size()), &status);
    return textOf(buffer, length, status);
}

std::string keywordOf(const std::string& locale, const char* keyword) {
    Buffer buffer{};
    auto status = U_ZERO_ERROR;
    const auto length = uloc_getKeywordValue(locale.c_str(), keyword, buffer.data(),
                                             static_cast<std::int32_t>(buffer.size()), &status);
    return textOf(buffer, length, status);
}

std::optional<std::string> currencyOf(const std::string& locale) {
    std::array<UChar, 8> code{};
    auto status = U_ZERO_ERROR;
    const auto length =
        ucurr_forLocale(locale.c_str(), code.data(), static_cast<std::int32_t>(code.size()), &status);
    if (U_FAILURE(status) || length != 3) return std::nullopt;
    return std::string(code.begin(), code.begin() + length);
}

} // namespace

std::optional<std::string> regionOfStorefront(const std::string& storefront) {
    auto status = U_ZERO_ERROR;
    const auto* const region = uregion_getRegionFromCode(storefront.c_str(), &status);
    if (U_FAILURE(status) || region == nullptr || uregion_getType(region) != URGN_TERRITORY)
        return std::nullopt;
    return std::string(uregion_getRegionCode(region));
}

PriceLocale priceLocaleOf(const std::string& locale, const std::optional<std::string>& region) {
    const auto code = region ? *region : regionOf(locale);
    const auto currency = keywordOf(locale, "currency");
    if (code.empty() && currency.empty()) return {};
    return {.currencyCode = currencyOf("und_" + code + (currency.empty() ? "" : "@currency=" + currency)),
            .regionCode = code.empty() ? std::nullopt : std::optional(code)};
}

} // namespace corvantile
