#pragma once

#include <string>
#include <string_view>

namespace corvantile {

// The storage key's text, from the keychain; made and kept there when it holds none that can be read.
// Failures of the keychain and of the random bytes are not noticed.
[[nodiscard]] std::string loadOrMakeStorageKey();

// What the cipher takes of the text: its first and its last 16 characters. The last two are always "==",
// which stays as it is: records on devices were written so. Both are empty for a text of fewer characters,
// which only a foreign keychain entry can be; the cipher then refuses.
struct StorageKeyParts {
    std::string key;
    std::string iv;
};

[[nodiscard]] StorageKeyParts storageKeyParts(std::string_view text);

} // namespace corvantile
