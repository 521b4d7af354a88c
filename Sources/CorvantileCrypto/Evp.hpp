#pragma once

#include <memory>

#include <openssl/evp.h>

namespace corvantile::evp {

struct ContextDeleter {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); } // wipes the key
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, ContextDeleter>;

// Fetched once for the whole process, since a look-up costs more than the cipher itself on a short text. Null
// when this machine's OpenSSL offers none of that name.
[[nodiscard]] const EVP_CIPHER* aes128Cbc();
[[nodiscard]] const EVP_CIPHER* aes128Ecb();
[[nodiscard]] const EVP_CIPHER* aes256Gcm();

// OpenSSL keeps what went wrong in a queue of the thread, where the host's own calls would find it.
void forgetErrors();

[[nodiscard]] inline const unsigned char* bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}
[[nodiscard]] inline unsigned char* bytes(char* text) { return reinterpret_cast<unsigned char*>(text); }

} // namespace corvantile::evp
