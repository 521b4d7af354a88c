#include "CorvantileDesktop/Keychain/detail/VaultFormat.hpp"

#include "CorvantilePlatform/Keychain/KeychainError.hpp"

#include <sqlite3.h>

namespace corvantile {

const StateFormat vaultFormat = {
    .applicationIdentifier = 0x43565654, // "CVVT"
    .version = 1,
    .content = "keychain entries",
    .tables = "CREATE TABLE entries (service BLOB NOT NULL, account BLOB NOT NULL,"
              " key BLOB NOT NULL, box BLOB NOT NULL, PRIMARY KEY (service, account)) WITHOUT ROWID",
    .query = "SELECT service, account, key, box FROM entries",
    .isDurable = true,
    .longLog = 1000}; // about as many saves

NSError vaultError(const SqliteError& error) {
    switch (error.code()) {
    case SQLITE_FULL: return keychainError(KeychainStatus::diskFull);
    case SQLITE_BUSY: return keychainError(KeychainStatus::notAvailable, "Another process holds the vault.");
    case SQLITE_MISMATCH:
        return keychainError(KeychainStatus::notAvailable, "A later version has made the vault.");
    case SQLITE_NOTADB: return keychainError(KeychainStatus::io, "The vault's file is no vault.");
    case SQLITE_CORRUPT: return keychainError(KeychainStatus::io, "The vault is damaged.");
    }
    return keychainError(KeychainStatus::io, std::string("The vault: ") + error.what() + ".");
}

} // namespace corvantile
