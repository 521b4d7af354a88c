#pragma once

#include "CorvantilePlatform/NonCopyable.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// What the cipher takes of the key's text: its first and its last 16 characters. The last two are always
// "==", which stays as it is: records on devices were written so. Both are empty for a text of fewer
// characters, which only a foreign keychain entry can be; the cipher then refuses.
struct StorageKeyParts {
    std::string key;
    std::string iv;
};

[[nodiscard]] StorageKeyParts storageKeyParts(std::string_view text);

// The key of the records, read from the keychain when it is constructed; where there is none that can be
// read, a new one is made and saved there. A refused save is not reported: the key then serves this process,
// and each `encrypt` first tries again to save it. An entry that exists after a refused save is used from
// then on: another process was quicker, or the keychain has been unlocked.
class StorageKey : NonCopyable {
public:
    StorageKey();

    [[nodiscard]] std::optional<std::string> encrypt(std::string_view text);
    [[nodiscard]] std::optional<std::string> decrypt(std::string_view text) const;

private:
    void save();

    StorageKeyParts parts_;
    std::optional<StorageKeyParts> former_; // for what this process encrypted before it found another key
    std::string unsaved_;                   // the key's text; empty once the keychain holds it
};

} // namespace corvantile
