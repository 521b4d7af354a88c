#include "Corvantile/Plugin/Database/detail/StorageKey.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantilePlatform/Platform.hpp"
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

void keep(const std::string& key) {
    try {
        Locksmith::saveData({{std::string(keyEntry), key}}, keyAccount);
    } catch (const NSError&) {
        // The key then lives for this process only: without it the app could store nothing at all.
    }
}

} // namespace

std::string loadOrMakeStorageKey() {
    if (auto stored = storedKey()) return std::move(*stored);
    const auto key = RandomBytes().text();
    keep(key);
    return key;
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
