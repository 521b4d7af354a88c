#include "CorvantileCrypto/OpenSSLCryptor.hpp"

#include "CorvantileCrypto/Evp.hpp"

#include <array>
#include <climits>
#include <cstring>

#include <openssl/crypto.h>

namespace corvantile {

namespace {

constexpr bool isPadded(std::uint32_t options) { return (options & Cryptor::pkcs7Padding) != 0; }
constexpr bool isChained(std::uint32_t options) { return (options & Cryptor::ecbMode) == 0; }

bool fits(Cryptor::Operation operation, std::uint32_t options, std::size_t size) {
    if (size > INT_MAX - Cryptor::blockSize) return false;
    const bool isWhole = size % Cryptor::blockSize == 0;
    if (!isPadded(options)) return isWhole;
    return operation == Cryptor::Operation::encrypt || (isWhole && size > 0);
}

std::size_t outputSize(Cryptor::Operation operation, std::uint32_t options, std::size_t size) {
    const bool addsPadding = isPadded(options) && operation == Cryptor::Operation::encrypt;
    return addsPadding ? size + Cryptor::blockSize - size % Cryptor::blockSize : size;
}

} // namespace

// A cipher context with its key in it.
class OpenSSLCryptor::Schedule {
public:
    // Null when OpenSSL offers no such cipher.
    static std::unique_ptr<Schedule> make(Operation operation, std::uint32_t options, std::string_view key) {
        auto schedule = std::make_unique<Schedule>(operation, options, key);
        const auto* const cipher = isChained(options) ? evp::aes128Cbc() : evp::aes128Ecb();
        const int direction = operation == Operation::encrypt ? 1 : 0;
        auto* const context = schedule->context_.get();
        if (context == nullptr || cipher == nullptr ||
            EVP_CipherInit_ex2(context, cipher, evp::bytes(key.data()), nullptr, direction, nullptr) != 1)
            return nullptr;
        EVP_CIPHER_CTX_set_padding(context, isPadded(options) ? 1 : 0);
        return schedule;
    }

    Schedule(Operation operation, std::uint32_t options, std::string_view key)
        : context_(EVP_CIPHER_CTX_new()), operation_(operation), options_(options) {
        std::memcpy(key_.data(), key.data(), key_.size());
    }
    Schedule(const Schedule&) = delete;
    Schedule& operator=(const Schedule&) = delete;
    ~Schedule() { OPENSSL_cleanse(key_.data(), key_.size()); }

    [[nodiscard]] bool isFor(std::uint32_t options, std::string_view key) const {
        return options_ == options && std::memcmp(key_.data(), key.data(), key_.size()) == 0;
    }

    // Also sets the IV back to the beginning and forgets what an earlier text left behind.
    std::optional<std::string> run(std::string_view iv, std::string_view input) {
        auto* const context = context_.get();
        std::string output(outputSize(operation_, options_, input.size()), '\0');
        auto* const out = evp::bytes(output.data());
        int written = 0;
        int rest = 0;
        if (EVP_CipherInit_ex2(context, nullptr, nullptr,
                               isChained(options_) ? evp::bytes(iv.data()) : nullptr, -1, nullptr) != 1 ||
            EVP_CipherUpdate(context, out, &written, evp::bytes(input.data()),
                             static_cast<int>(input.size())) != 1 ||
            EVP_CipherFinal_ex(context, out + written, &rest) != 1)
            return std::nullopt;
        output.resize(static_cast<std::size_t>(written + rest));
        return output;
    }

private:
    const evp::Context context_;
    const Operation operation_;
    const std::uint32_t options_;
    std::array<char, keySize> key_{};
};

OpenSSLCryptor::OpenSSLCryptor() = default;

OpenSSLCryptor::~OpenSSLCryptor() {
    take(keptForEncrypting_);
    take(keptForDecrypting_);
}

std::optional<std::string> OpenSSLCryptor::crypt(Operation operation, std::uint32_t options,
                                                 std::string_view key, std::string_view iv,
                                                 std::string_view input) {
    if (key.size() < keySize || (isChained(options) && iv.size() < blockSize)) return std::nullopt;
    if (!fits(operation, options, input.size())) return std::nullopt;

    auto& kept = operation == Operation::encrypt ? keptForEncrypting_ : keptForDecrypting_;
    auto schedule = take(kept);
    if (!schedule || !schedule->isFor(options, key)) schedule = Schedule::make(operation, options, key);
    auto output = schedule ? schedule->run(iv, input) : std::nullopt;
    if (!output) evp::forgetErrors();
    keep(kept, std::move(schedule));
    return output;
}

std::unique_ptr<OpenSSLCryptor::Schedule> OpenSSLCryptor::take(Kept& kept) {
    return std::unique_ptr<Schedule>(kept.exchange(nullptr, std::memory_order_acquire));
}

void OpenSSLCryptor::keep(Kept& kept, std::unique_ptr<Schedule> schedule) {
    const std::unique_ptr<Schedule> former(kept.exchange(schedule.release(), std::memory_order_acq_rel));
}

} // namespace corvantile
