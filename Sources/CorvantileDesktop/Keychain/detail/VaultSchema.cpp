#include "CorvantileDesktop/Keychain/detail/VaultSchema.hpp"

#include "CorvantileDesktop/detail/Storage/Sqlite.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"

#include <cstdint>
#include <system_error>

#include <sqlite3.h>

namespace corvantile {

namespace {

constexpr std::int64_t applicationIdentifier = 0x43565654; // "CVVT"
constexpr std::int64_t version = 1;

} // namespace

VaultContent contentOf(SqliteDatabase& database) {
    const bool isOurs = database.integer("PRAGMA application_id") == applicationIdentifier;
    if (isOurs && database.integer("PRAGMA user_version") > version) return VaultContent::later;
    const auto columns = database.integer("SELECT count(*) FROM pragma_table_info('entries')"
                                          " WHERE name IN ('service', 'account', 'key', 'box')");
    if (isOurs && columns == 4) return VaultContent::vault;
    const bool hasTables = database.integer("SELECT count(*) FROM sqlite_schema") > 0;
    return isOurs || hasTables ? VaultContent::foreign : VaultContent::empty;
}

bool isWhole(SqliteDatabase& database) {
    return database.integer("SELECT count(*) FROM pragma_quick_check(1) WHERE quick_check <> 'ok'") == 0;
}

void makeVault(SqliteDatabase& database) {
    database.execute("PRAGMA journal_mode = WAL");
    database.execute("BEGIN IMMEDIATE;"
                     "CREATE TABLE entries (service BLOB NOT NULL, account BLOB NOT NULL,"
                     " key BLOB NOT NULL, box BLOB NOT NULL, PRIMARY KEY (service, account)) WITHOUT ROWID;"
                     "PRAGMA application_id = 0x43565654;"
                     "PRAGMA user_version = 1;"
                     "COMMIT");
}

void emptyVaultLog(const std::filesystem::path& file) {
    try {
        SqliteDatabase database(file, SqliteDatabase::Missing::fails);
        database.keepLog();
        // The first commit into an emptied log flushes its header as well. This one says nothing new; it
        // takes that flush upon itself.
        if (database.emptyLog()) database.execute("PRAGMA user_version = 1");
    } catch (const SqliteError&) {
        // The log stays as it is, and the next save that finds it long asks again.
    }
}

bool isGoneFromItsLog(const std::filesystem::path& file) {
    const auto hasContent = [](const std::filesystem::path& path) {
        std::error_code error;
        return std::filesystem::file_size(path, error) > 0 && !error;
    };
    return !hasContent(file) && hasContent(file.string() + "-wal");
}

NSError vaultError(const SqliteError& error) {
    switch (error.code()) {
    case SQLITE_FULL: return keychainError(KeychainStatus::diskFull);
    case SQLITE_BUSY: return keychainError(KeychainStatus::notAvailable, "Another process holds the vault.");
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT: return keychainError(KeychainStatus::io, "The vault is damaged.");
    }
    return keychainError(KeychainStatus::io, std::string("The vault: ") + error.what() + ".");
}

NSError laterVersionError() {
    return keychainError(KeychainStatus::notAvailable, "A later version has made the vault.");
}

} // namespace corvantile
