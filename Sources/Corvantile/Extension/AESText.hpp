#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// AES-128 over text: plain text to base64 in lines of 64, and back. The key is the first 16 bytes of `key`,
// the initialisation vector the first 16 of `iv`, which ends in a zero that counts. `options` are
// CommonCrypto's: 1 adds padding, 2 is ECB instead of CBC; a value that is no unsigned 32-bit number is a
// fatal error. nullopt when key or vector are too short, when the input's length or padding does not fit,
// when it is no base64, and when the key, the plain text or what comes out of decryption is not UTF-8.
[[nodiscard]] CORVANTILE_API std::optional<std::string>
aesEncrypt(std::string_view text, std::string_view key, std::string_view iv, long long options);
[[nodiscard]] CORVANTILE_API std::optional<std::string>
aesDecrypt(std::string_view text, std::string_view key, std::string_view iv, long long options);

} // namespace corvantile
