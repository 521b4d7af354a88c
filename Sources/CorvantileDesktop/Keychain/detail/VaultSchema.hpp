#pragma once

#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <filesystem>
#include <string>

namespace corvantile {

class SqliteDatabase;
class SqliteError;

constexpr const char* vaultFileName = "vault.sqlite";

// An entry as the vault's file holds it.
struct SealedEntry {
    std::string service;
    std::string account;
    std::string keyIdentifier; // of the master key
    std::string box;
};

// What an SQLite file is to a vault.
enum class VaultContent {
    vault,
    empty,   // nothing in it yet: it can become a vault
    foreign, // somebody else's tables
    later,   // a vault of a later version, which this one must not touch
};

// Throws SqliteError.
[[nodiscard]] VaultContent contentOf(SqliteDatabase& database);

// No page contradicts another. Takes time in proportion to the file. Throws SqliteError.
[[nodiscard]] bool isWhole(SqliteDatabase& database);

// Makes an empty file a vault, as a whole or not at all. Throws SqliteError.
void makeVault(SqliteDatabase& database);

// Moves the write-ahead log into the file, and begins the next log so that no save has to. Does less when
// something is in its way; nobody waits for it.
void emptyVaultLog(const std::filesystem::path& file);

// The file is missing or empty, and its log is not: SQLite would delete the log when it opened the file.
[[nodiscard]] bool isGoneFromItsLog(const std::filesystem::path& file);

// What the keychain's users get to see of an SQLite error.
[[nodiscard]] NSError vaultError(const SqliteError& error);
[[nodiscard]] NSError laterVersionError();

} // namespace corvantile
