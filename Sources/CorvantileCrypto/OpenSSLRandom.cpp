#include "CorvantileCrypto/OpenSSLRandom.hpp"

#include "CorvantileCrypto/Evp.hpp"

#include <algorithm>
#include <vector>

#include <openssl/crypto.h>
#include <openssl/rand.h>

namespace corvantile {

OpenSSLRandom::OpenSSLRandom() = default;
OpenSSLRandom::~OpenSSLRandom() = default;

// Drawn aside, since a generator that fails half way has written by then.
bool OpenSSLRandom::copyBytes(unsigned char* bytes, std::size_t count) {
    std::vector<unsigned char> drawn(count);
    const bool isDrawn = RAND_bytes_ex(nullptr, drawn.data(), count, 0) == 1;
    if (isDrawn)
        std::copy(drawn.begin(), drawn.end(), bytes);
    else
        evp::forgetErrors();
    OPENSSL_cleanse(drawn.data(), count);
    return isDrawn;
}

} // namespace corvantile
