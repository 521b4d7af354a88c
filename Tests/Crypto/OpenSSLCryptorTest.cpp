#include "Crypto/OpenSSLCryptor.hpp"

#include <gtest/gtest.h>

#include <latch>
#include <string>
#include <thread>
#include <vector>

#include <openssl/err.h>

namespace corvantile {
namespace {

using Operation = Cryptor::Operation;

const std::string iv(Cryptor::blockSize, 'i');

TEST(OpenSSLCryptor, ServesThreadsWithDifferentKeysAtOnce) {
    constexpr int threadCount = 4;
    OpenSSLCryptor cryptor;
    std::latch start(threadCount);
    std::vector<std::string> failures(threadCount);
    std::vector<std::thread> threads;
    for (std::size_t number = 0; number < threadCount; ++number)
        threads.emplace_back([&, number] {
            // Every other thread shares a key, so that a kept schedule is now fitting and now not.
            const std::string key(Cryptor::keySize, static_cast<char>('a' + number % 2));
            start.arrive_and_wait();
            for (int round = 0; round < 500; ++round) {
                const auto text = std::to_string(number) + ":" + std::to_string(round);
                const auto sealed = cryptor.crypt(Operation::encrypt, Cryptor::pkcs7Padding, key, iv, text);
                const auto opened =
                    sealed ? cryptor.crypt(Operation::decrypt, Cryptor::pkcs7Padding, key, iv, *sealed)
                           : sealed;
                if (opened != text) failures[number] = text;
            }
        });
    for (auto& thread : threads) thread.join();

    EXPECT_EQ(failures, std::vector<std::string>(threadCount));
}

TEST(OpenSSLCryptor, LeavesNoErrorBehindForTheHost) {
    OpenSSLCryptor cryptor;
    const std::string key(Cryptor::keySize, 'k');
    const std::string noise(2 * Cryptor::blockSize, 'n');

    EXPECT_EQ(cryptor.crypt(Operation::decrypt, Cryptor::pkcs7Padding, key, iv, noise), std::nullopt);

    EXPECT_EQ(ERR_peek_error(), 0U);
}

} // namespace
} // namespace corvantile
