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

std::optional<std::string> crypt(Cryptor::Operation operation, std::string_view input, std::string_view key,
                                 std::string_view iv, long long options) {
    return Platform::current().ports().cryptor->crypt(operation, checkedOptions(options), key, iv, input);
}

} // namespace

std::optional<std::string> aesEncrypt(std::string_view text, std::string_view key, std::string_view iv,
                                      long long options) {
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
