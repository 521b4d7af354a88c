#include "CorvantileCrypto/SealedBox.hpp"

#include "CorvantileCrypto/Evp.hpp"

#include <climits>
#include <utility>

#include <openssl/rand.h>

namespace corvantile {

namespace {

constexpr int tagLength = static_cast<int>(SealedBox::tagSize);

enum class Direction { open = 0, seal = 1 };

// A context with key, nonce (the cipher's own length) and associated data; null when OpenSSL refuses.
evp::Context begin(Direction direction, std::string_view key, const unsigned char* nonce,
                   std::string_view associatedData) {
    evp::Context context(EVP_CIPHER_CTX_new());
    const auto* const cipher = evp::aes256Gcm();
    if (!context || cipher == nullptr) return nullptr;
    int length = 0;
    const bool isReady = EVP_CipherInit_ex2(context.get(), cipher, evp::bytes(key.data()), nonce,
                                            static_cast<int>(direction), nullptr) == 1 &&
                         EVP_CipherUpdate(context.get(), nullptr, &length, evp::bytes(associatedData.data()),
                                          static_cast<int>(associatedData.size())) == 1;
    return isReady ? std::move(context) : nullptr;
}

bool run(EVP_CIPHER_CTX* context, std::string_view input, unsigned char* output) {
    int length = 0;
    return input.empty() || EVP_CipherUpdate(context, output, &length, evp::bytes(input.data()),
                                             static_cast<int>(input.size())) == 1;
}

// The mode has no padding: nothing is written here.
bool finish(EVP_CIPHER_CTX* context) {
    unsigned char nothing[EVP_MAX_BLOCK_LENGTH];
    int length = 0;
    return EVP_CipherFinal_ex(context, nothing, &length) == 1;
}

bool areCountable(std::string_view key, std::string_view text, std::string_view associatedData) {
    return key.size() == SealedBox::keySize && text.size() <= INT_MAX && associatedData.size() <= INT_MAX;
}

std::optional<std::string> sealed(std::string_view key, std::string_view plaintext,
                                  std::string_view associatedData) {
    std::string box(SealedBox::overhead + plaintext.size(), '\0');
    auto* const nonce = evp::bytes(box.data());
    auto* const ciphertext = nonce + SealedBox::nonceSize;
    auto* const tag = ciphertext + plaintext.size();
    if (RAND_bytes(nonce, static_cast<int>(SealedBox::nonceSize)) != 1) return std::nullopt;
    const auto context = begin(Direction::seal, key, nonce, associatedData);
    const bool isSealed = context && run(context.get(), plaintext, ciphertext) && finish(context.get()) &&
                          EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_GET_TAG, tagLength, tag) == 1;
    if (!isSealed) return std::nullopt;
    return box;
}

std::optional<std::string> opened(std::string_view key, std::string_view box,
                                  std::string_view associatedData) {
    const auto ciphertext = box.substr(SealedBox::nonceSize, box.size() - SealedBox::overhead);
    std::string tag(box.substr(box.size() - SealedBox::tagSize));
    std::string plaintext(ciphertext.size(), '\0');
    const auto context = begin(Direction::open, key, evp::bytes(box.data()), associatedData);
    const bool isOpen =
        context && run(context.get(), ciphertext, evp::bytes(plaintext.data())) &&
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_TAG, tagLength, tag.data()) == 1 &&
        finish(context.get());
    if (!isOpen) return std::nullopt;
    return plaintext;
}

} // namespace

std::optional<std::string> SealedBox::seal(std::string_view key, std::string_view plaintext,
                                           std::string_view associatedData) {
    if (!areCountable(key, plaintext, associatedData)) return std::nullopt;
    auto box = sealed(key, plaintext, associatedData);
    if (!box) evp::forgetErrors();
    return box;
}

std::optional<std::string> SealedBox::open(std::string_view key, std::string_view box,
                                           std::string_view associatedData) {
    if (!areCountable(key, box, associatedData) || box.size() < overhead) return std::nullopt;
    auto plaintext = opened(key, box, associatedData);
    if (!plaintext) evp::forgetErrors();
    return plaintext;
}

} // namespace corvantile
