#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Keychain/KeychainValue.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// A dictionary as bytes, exact for every value: a number's bits are kept, whatever they are. The layout is in
// Docs/Files/Keychain.md. Equal dictionaries give equal bytes.
[[nodiscard]] CORVANTILE_API std::string encodeDictionary(const KeychainDictionary& dictionary);

// nullopt for bytes that no dictionary encodes to.
[[nodiscard]] CORVANTILE_API std::optional<KeychainDictionary> decodeDictionary(std::string_view bytes);

} // namespace corvantile
