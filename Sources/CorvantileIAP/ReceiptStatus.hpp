#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <string>

namespace corvantile {

// The domain of the errors of reading a receipt; the code is the store's status, or `unreadableReceipt`.
inline constexpr const char* receiptErrorDomain = "corvantile.receipt";
inline constexpr int unreadableReceipt = -1;

// What the store means by a status other than 0, a sentence for people.
[[nodiscard]] CORVANTILE_API std::string receiptStatusText(int status);

// Whether the store's answer tells the purchases in spite of such a status.
[[nodiscard]] CORVANTILE_API bool hasPurchases(int status);

} // namespace corvantile
