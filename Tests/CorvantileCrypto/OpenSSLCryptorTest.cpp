#include "CorvantileCrypto/OpenSSLCryptor.hpp"

#include "Tests/CorvantilePlatform/AtOnce.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <openssl/err.h>

namespace corvantile::OpenSSLCryptorTest {

using Operation = Cryptor::Operation;

const std::string iv(Cryptor::blockSize, 'i');

TEST(OpenSSLCryptor, ServesThreadsWithDifferentKeysAtOnce) {
    OpenSSLCryptor cryptor;
    atOnce(4, [&](int number) {
        // Every other thread shares a key, so that a kept schedule is now fitting and now not.
        const std::string key(Cryptor::keySize, static_cast<char>('a' + number % 2));
        for (int round = 0; round < 500; ++round) {
            const auto text = std::to_string(number) + ":" + std::to_string(round);
            const auto sealed = cryptor.crypt(Operation::encrypt, Cryptor::pkcs7Padding, key, iv, text);
            EXPECT_EQ(cryptor.crypt(Operation::decrypt, Cryptor::pkcs7Padding, key, iv, sealed.value()),
                      text);
        }
    });
}

TEST(OpenSSLCryptor, LeavesNoErrorBehindForTheHost) {
    OpenSSLCryptor cryptor;
    const std::string key(Cryptor::keySize, 'k');
    const std::string noise(2 * Cryptor::blockSize, 'n');

    EXPECT_EQ(cryptor.crypt(Operation::decrypt, Cryptor::pkcs7Padding, key, iv, noise), std::nullopt);

    EXPECT_EQ(ERR_peek_error(), 0U);
}

} // namespace corvantile::OpenSSLCryptorTest
