#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// Secret bytes that show when they were changed: AES-256-GCM. A box is nonce | ciphertext | tag, and opens
// only with the key and the associated data that it was sealed with; the associated data itself is not in it.
// Each seal draws a new nonce. One key seals safely some 2^32 times. Threads: any.
class SealedBox {
public:
    static constexpr std::size_t keySize = 32; // bytes, as are all sizes
    static constexpr std::size_t nonceSize = 12;
    static constexpr std::size_t tagSize = 16;
    static constexpr std::size_t overhead = nonceSize + tagSize;

    // nullopt when the key is not `keySize` long, or when no random bytes or no cipher can be had.
    [[nodiscard]] static std::optional<std::string> seal(std::string_view key, std::string_view plaintext,
                                                         std::string_view associatedData);

    // nullopt for anything but an unchanged box under this key and associated data.
    [[nodiscard]] static std::optional<std::string> open(std::string_view key, std::string_view box,
                                                         std::string_view associatedData);
};

} // namespace corvantile
