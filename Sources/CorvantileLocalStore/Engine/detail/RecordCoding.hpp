#pragma once

#include "CorvantileLocalStore/Engine/StoreRecords.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The store's records as the JSON texts that a storage keeps (Docs/Files/Store.md).

[[nodiscard]] std::string text(const StorePurchase& purchase);
[[nodiscard]] std::string text(const StoreTransaction& transaction);
[[nodiscard]] std::string text(const StoreSubscription& subscription);
[[nodiscard]] std::string text(const StoreSettings& settings);
[[nodiscard]] std::string text(const StoreClockSetting& clock);

// nullopt when the text is no such record.
template <class Record>
[[nodiscard]] std::optional<Record> recordFromText(std::string_view text);

template <>
std::optional<StorePurchase> recordFromText(std::string_view text);
template <>
std::optional<StoreTransaction> recordFromText(std::string_view text);
template <>
std::optional<StoreSubscription> recordFromText(std::string_view text);
template <>
std::optional<StoreSettings> recordFromText(std::string_view text);
template <>
std::optional<StoreClockSetting> recordFromText(std::string_view text);

} // namespace corvantile
