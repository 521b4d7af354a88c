#include "CorvantilePlatform/Security/Cryptor.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <algorithm>
#include <array>

namespace corvantile::CryptorContractTest {

constexpr auto encrypt = Cryptor::Operation::encrypt;
constexpr auto decrypt = Cryptor::Operation::decrypt;
constexpr std::uint32_t cbc = 0;
constexpr auto padded = Cryptor::pkcs7Padding;
constexpr auto ecb = Cryptor::ecbMode;

std::string fromHex(std::string_view hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    return bytes;
}

// The published examples of the modes of operation (NIST SP 800-38A, appendix F).
const auto cipherKey = fromHex("2b7e151628aed2a6abf7158809cf4f3c");
const auto iv = fromHex("000102030405060708090a0b0c0d0e0f");
const auto plaintext = fromHex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                               "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");
const auto cbcText = fromHex("7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
                             "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7");
const auto ecbText = fromHex("3ad77bb40d7a3660a89ecaf32466ef97f5d3d58503b9699de785895a96fdbaaf"
                             "43b1cd7f598ece23881b00e3ed0306887b0c785e27e8ad3f8223207104725dd4");

template <class Harness>
class CryptorContract : public PortContract<Harness> {
protected:
    [[nodiscard]] Cryptor& cryptor() { return *this->ports().cryptor; }
};
TYPED_TEST_SUITE(CryptorContract, Harnesses);

TYPED_TEST(CryptorContract, AgreesWithThePublishedExamplesOfBothModes) {
    const std::pair<std::uint32_t, std::string> cases[] = {
        {cbc, cbcText}, {ecb, ecbText}, {cbc | 4U, cbcText}};
    for (const auto& [options, ciphertext] : cases) {
        SCOPED_TRACE(options);
        EXPECT_EQ(this->cryptor().crypt(encrypt, options, cipherKey, iv, plaintext), ciphertext);
        EXPECT_EQ(this->cryptor().crypt(decrypt, options, cipherKey, iv, ciphertext), plaintext);

        const auto longer = this->cryptor().crypt(encrypt, options | padded, cipherKey, iv, plaintext);
        EXPECT_TRUE(longer.value().starts_with(ciphertext));
        EXPECT_EQ(this->cryptor().crypt(decrypt, options | padded, cipherKey, iv, *longer), plaintext);
    }
}

TYPED_TEST(CryptorContract, RefusesWhatDoesNotFit) {
    const auto block = cbcText.substr(0, 16);
    const struct {
        const char* why;
        Cryptor::Operation operation;
        std::uint32_t options;
        std::string key, iv, input;
    } cases[] = {{"15 bytes without padding", encrypt, cbc, cipherKey, iv, std::string(15, 'x')},
                 {"17 bytes without padding", encrypt, ecb, cipherKey, iv, std::string(17, 'x')},
                 {"half a block", decrypt, cbc, cipherKey, iv, cbcText.substr(0, 24)},
                 {"half a block, padded", decrypt, padded, cipherKey, iv, cbcText.substr(0, 24)},
                 {"nothing, padded", decrypt, padded, cipherKey, iv, ""},
                 {"no padding at its end", decrypt, padded, cipherKey, iv, block},
                 {"a short key", encrypt, padded, cipherKey.substr(1), iv, "text"},
                 {"no key", decrypt, cbc, "", iv, block},
                 {"a short IV", encrypt, padded, cipherKey, iv.substr(1), "text"}};
    for (const auto& [why, operation, options, shortKey, shortIV, input] : cases)
        EXPECT_EQ(this->cryptor().crypt(operation, options, shortKey, shortIV, input), std::nullopt) << why;

    EXPECT_EQ(this->cryptor().crypt(encrypt, cbc, cipherKey, iv, ""), "");
    EXPECT_EQ(this->cryptor().crypt(decrypt, cbc, cipherKey, iv, ""), "");
}

TYPED_TEST(CryptorContract, LooksAtNoMoreThanItNeedsAndAtNothingOfTheLastText) {
    const auto other = std::string(16, 'o');
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(this->cryptor().crypt(encrypt, cbc, cipherKey + "more", iv + "more", plaintext), cbcText);
        EXPECT_EQ(this->cryptor().crypt(decrypt, padded, cipherKey, iv, cbcText.substr(0, 32)), std::nullopt);
        EXPECT_EQ(this->cryptor().crypt(decrypt, cbc, cipherKey, iv, cbcText), plaintext);
        EXPECT_NE(this->cryptor().crypt(encrypt, cbc, cipherKey, other, plaintext), cbcText);
        EXPECT_NE(this->cryptor().crypt(encrypt, cbc, other, iv, plaintext), cbcText);
        EXPECT_EQ(this->cryptor().crypt(encrypt, ecb, cipherKey, "", plaintext), ecbText);
    }
}

template <class Harness>
class SecureRandomContract : public PortContract<Harness> {};
TYPED_TEST_SUITE(SecureRandomContract, Harnesses);

TYPED_TEST(SecureRandomContract, FillsTheWholeBufferWithOtherBytesEachTime) {
    std::array<unsigned char, 64> first{}, second{};
    const auto& random = this->ports().random;

    EXPECT_TRUE(random->copyBytes(first.data(), first.size()));
    EXPECT_TRUE(random->copyBytes(second.data(), second.size()));

    EXPECT_FALSE(std::equal(first.end() - 8, first.end(), second.end() - 8));
}

} // namespace corvantile::CryptorContractTest
