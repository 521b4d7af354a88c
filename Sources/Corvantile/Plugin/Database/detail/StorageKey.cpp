#include "Corvantile/Plugin/Database/detail/StorageKey.hpp"

#include "Corvantile/Extension/AESText.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Security/Cryptor.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

#include <array>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace corvantile {

namespace {

constexpr std::string_view keyAccount = "realm_encryption_key";
constexpr std::string_view keyEntry = "key";
constexpr std::size_t partLength = 16; // characters

// Random bytes that leave no copy behind in memory: writes through volatile are not optimised away.
class RandomBytes : NonCopyable {
public:
    RandomBytes() { Platform::current().ports().random->copyBytes(bytes_.data(), bytes_.size()); }
    ~RandomBytes() {
        volatile unsigned char* const bytes = bytes_.data();
        for (std::size_t i = 0; i < bytes_.size(); ++i) bytes[i] = 0;
    }

    [[nodiscard]] std::string text() const {
        return base64({reinterpret_cast<const char*>(bytes_.data()), bytes_.size()});
    }

private:
    std::array<unsigned char, 64> bytes_{};
};

std::optional<std::string> storedKey() {
    const auto stored = Locksmith::loadDataForUserAccount(keyAccount);
    if (!stored) return std::nullopt;
    const auto found = stored->find(keyEntry);
    const auto* const text = found == stored->end() ? nullptr : found->second.as<std::string>();
    return text == nullptr ? std::nullopt : std::optional(*text);
}

bool isSaved(const std::string& key) {
    try {
        Locksmith::saveData({{std::string(keyEntry), key}}, keyAccount);
        return true;
    } catch (...) {
        return false; // without a key the app could store nothing at all
    }
}

std::optional<std::string> decrypted(std::string_view text, const StorageKeyParts& parts) {
    return aesDecrypt(text, parts.key, parts.iv, Cryptor::pkcs7Padding);
}

} // namespace

StorageKey::StorageKey() {
    if (const auto stored = storedKey()) {
        parts_ = storageKeyParts(*stored);
        return;
    }
    unsaved_ = RandomBytes().text();
    parts_ = storageKeyParts(unsaved_);
    save();
}

void StorageKey::save() {
    if (isSaved(unsaved_)) return unsaved_.clear();
    const auto stored = storedKey();
    if (!stored) return;
    former_ = std::exchange(parts_, storageKeyParts(*stored));
    unsaved_.clear();
}

std::optional<std::string> StorageKey::encrypt(std::string_view text) {
    if (!unsaved_.empty()) save();
    return aesEncrypt(text, parts_.key, parts_.iv, Cryptor::pkcs7Padding);
}

std::optional<std::string> StorageKey::decrypt(std::string_view text) const {
    auto plain = decrypted(text, parts_);
    return plain || !former_ ? plain : decrypted(text, *former_);
}

StorageKeyParts storageKeyParts(std::string_view text) {
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at < text.size(); at += firstCharacterLength(text.substr(at)))
        starts.push_back(at);
    if (starts.size() < partLength) return {};
    const auto ivStart = starts[starts.size() - partLength];
    starts.push_back(text.size());
    return {std::string(text.substr(0, starts[partLength])), std::string(text.substr(ivStart))};
}

} // namespace corvantile
