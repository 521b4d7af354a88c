#pragma once

#include <memory>

namespace corvantile {
class Locksmith;
} // namespace corvantile

namespace corvantile::tool {

class MarkedTransactions;

// The same keychain; `transactions` follows the purchase markers that are saved in it.
[[nodiscard]] std::shared_ptr<Locksmith> observed(std::shared_ptr<Locksmith> keychain,
                                                  std::shared_ptr<MarkedTransactions> transactions);

} // namespace corvantile::tool
