#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// One pass of AES-128 over a whole text, with CommonCrypto's option values. Threads: any.
class CORVANTILE_API Cryptor : NonCopyable {
public:
    enum class Operation { encrypt, decrypt };

    // Bits of `options`; others mean nothing. Without `ecbMode` the mode is CBC.
    static constexpr std::uint32_t pkcs7Padding = 1;
    static constexpr std::uint32_t ecbMode = 2;

    static constexpr std::size_t keySize = 16; // bytes, as are all sizes
    static constexpr std::size_t blockSize = 16;

    virtual ~Cryptor();

    // The first `keySize` bytes of the key count and, in CBC mode, the first `blockSize` bytes of `iv`.
    // nullopt when either is shorter; when the input is not made of whole blocks although it must be (without
    // padding, and whenever decrypting); when it is longer than `int` counts; and when what was decrypted
    // does not end in its padding, as no empty input does. A wrong key passes for right about once in 256
    // times.
    [[nodiscard]] virtual std::optional<std::string> crypt(Operation operation, std::uint32_t options,
                                                           std::string_view key, std::string_view iv,
                                                           std::string_view input) = 0;
};

} // namespace corvantile
