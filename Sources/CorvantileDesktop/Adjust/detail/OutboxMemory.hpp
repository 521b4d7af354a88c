#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What an outbox remembers beside its packages, as texts by name.
namespace corvantile::outboxmemory {

inline constexpr std::string_view sessions = "sessions";         // how many there have been
inline constexpr std::string_view lastActive = "last-active";    // Unix seconds
inline constexpr std::string_view pushToken = "push-token";      // hex
inline constexpr std::string_view transactions = "transactions"; // TransactionMemory
inline constexpr std::string_view attribution = "attribution";   // what the server said last

// 0 where there is none.
[[nodiscard]] std::int64_t number(const std::optional<std::string>& text);

// What to write where the file has `filed`, and a process `held` that could not always read it: it may have
// begun from nothing.
[[nodiscard]] std::string merged(std::string_view name, const std::optional<std::string>& filed,
                                 const std::string& held);

} // namespace corvantile::outboxmemory
