#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace corvantile {

// How many transactions are remembered.
inline constexpr std::size_t keptTransactions = 10;

// The text that remembers the transactions in `remembered` and one more, the oldest forgotten if need be;
// nullopt when that one is in it.
[[nodiscard]] std::optional<std::string> withTransaction(const std::optional<std::string>& remembered,
                                                         const std::string& identifier);

// The text that remembers those in `remembered` and then those in `later`.
[[nodiscard]] std::string withTransactions(std::string remembered, const std::string& later);

} // namespace corvantile
