#pragma once

#include "CorvantileLocalStore/Catalogue/Period.hpp"
#include "CorvantileLocalStore/Engine/StoreRecords.hpp"

#include <chrono>
#include <optional>

// How a subscription stands, and how long it stays so.
namespace corvantile {

using Days = std::chrono::duration<int, std::ratio<86400>>;

// How long a customer who has not paid keeps what a subscription with such a period gives.
[[nodiscard]] Days graceOf(Period period);

// Its period is over, and not paid.
[[nodiscard]] bool isOwed(const StoreSubscription& subscription);
[[nodiscard]] bool hasEnded(const StoreSubscription& subscription);

// When something happens to it, if nobody interferes.
[[nodiscard]] std::optional<Date> dueDate(const StoreSubscription& subscription);

void expire(StoreSubscription& subscription, ExpirationIntent intent);

} // namespace corvantile
