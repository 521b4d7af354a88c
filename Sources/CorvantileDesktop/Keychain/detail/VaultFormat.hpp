#pragma once

#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <string>

namespace corvantile {

constexpr const char* vaultFileName = "vault.sqlite";

// The file that holds a vault's entries; Docs/Files/Keychain.md describes it.
extern const StateFormat vaultFormat;

// An entry as the vault's file holds it.
struct SealedEntry {
    std::string service;
    std::string account;
    std::string keyIdentifier; // of the master key
    std::string box;
};

// What the keychain's users get to see of an SQLite error.
[[nodiscard]] NSError vaultError(const SqliteError& error);

} // namespace corvantile
