#include "Corvantile/Extension/AESText.hpp"

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Security/Cryptor.hpp"

#include <cstdint>
#include <limits>

namespace corvantile {

namespace {

std::uint32_t checkedOptions(long long options) {
    if (options < 0 || options > static_cast<long long>(std::numeric_limits<std::uint32_t>::max()))
        fatalError("Cipher options are an unsigned 32-bit number, which " + std::to_string(options) +
                   " is not.");
    return static_cast<std::uint32_t>(options);
}

// The vector is handed over as zero-terminated text, so its end is the 16th byte of one that has 15.
std::optional<std::string> crypt(Cryptor::Operation operation, std::string_view input, std::string_view key,
                                 std::string_view iv, long long options) {
    const auto checked = checkedOptions(options);
    if (!isUtf8(key)) return std::nullopt;
    auto& cryptor = *Platform::current().ports().cryptor;
    if (iv.size() + 1 != Cryptor::blockSize) return cryptor.crypt(operation, checked, key, iv, input);
    return cryptor.crypt(operation, checked, key, std::string(iv).append(1, '\0'), input);
}

} // namespace

std::optional<std::string> aesEncrypt(std::string_view text, std::string_view key, std::string_view iv,
                                      long long options) {
    if (!isUtf8(text)) return std::nullopt;
    const auto sealed = crypt(Cryptor::Operation::encrypt, text, key, iv, options);
    if (!sealed) return std::nullopt;
    return base64Lines(*sealed);
}

std::optional<std::string> aesDecrypt(std::string_view text, std::string_view key, std::string_view iv,
                                      long long options) {
    const auto sealed = bytesOfBase64(text);
    if (!sealed) return std::nullopt;
    auto plain = crypt(Cryptor::Operation::decrypt, *sealed, key, iv, options);
    return plain && isUtf8(*plain) ? plain : std::nullopt;
}

} // namespace corvantile
