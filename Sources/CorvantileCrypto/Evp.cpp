#include "CorvantileCrypto/Evp.hpp"

#include <openssl/err.h>

namespace corvantile::evp {

// Never freed: OpenSSL takes its own leave of the process, perhaps before our statics do.
const EVP_CIPHER* aes128Cbc() {
    static const EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-128-CBC", nullptr);
    return cipher;
}

const EVP_CIPHER* aes128Ecb() {
    static const EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-128-ECB", nullptr);
    return cipher;
}

const EVP_CIPHER* aes256Gcm() {
    static const EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
    return cipher;
}

void forgetErrors() { ERR_clear_error(); }

} // namespace corvantile::evp
