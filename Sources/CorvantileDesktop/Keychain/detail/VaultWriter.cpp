#include "CorvantileDesktop/Keychain/detail/VaultWriter.hpp"

#include "CorvantileDesktop/Keychain/detail/PrivateFolder.hpp"
#include "CorvantileDesktop/Keychain/detail/VaultReader.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"
#include "CorvantileDesktop/detail/Storage/Sqlite.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"

#include <utility>
#include <vector>

#include <sys/stat.h>

namespace corvantile {

namespace {

constexpr int longVaultLog = 1000; // pages, about as many saves

} // namespace

struct VaultWriter::Connection {
    explicit Connection(std::unique_ptr<SqliteDatabase> opened) : database(std::move(opened)) {}

    std::unique_ptr<SqliteDatabase> database;
    SqliteStatement add = database->prepare(
        "INSERT INTO entries (service, account, key, box) VALUES (?1, ?2, ?3, ?4) ON CONFLICT DO NOTHING");
    SqliteStatement put =
        database->prepare("INSERT INTO entries (service, account, key, box) VALUES (?1, ?2, ?3, ?4)"
                          " ON CONFLICT DO UPDATE SET key = excluded.key, box = excluded.box");
    SqliteStatement remove = database->prepare("DELETE FROM entries WHERE service = ?1 AND account = ?2");

    [[nodiscard]] static SqliteRun run(const SqliteStatement& statement, const SealedEntry& entry) {
        return statement.run({entry.service, entry.account, entry.keyIdentifier, entry.box});
    }
};

VaultWriter::VaultWriter(std::filesystem::path file, VaultReader& reader, Help help)
    : file_(std::move(file)), reader_(reader), help_(std::move(help)) {}

VaultWriter::~VaultWriter() = default;

bool VaultWriter::add(const SealedEntry& entry) {
    return change([&entry](const Connection& connection) { return Connection::run(connection.add, entry); }) >
           0;
}

void VaultWriter::put(const SealedEntry& entry) {
    change([&entry](const Connection& connection) { return Connection::run(connection.put, entry); });
}

bool VaultWriter::remove(std::string_view account, std::string_view service) {
    return change([account, service](const Connection& connection) {
               return connection.remove.run({service, account});
           }) > 0;
}

// Each change is one statement, hence one transaction. SQLite takes the write lock before it looks for the
// row, so what it decides about the row still holds when it writes.
template <class Change>
int VaultWriter::change(Change run) {
    const std::lock_guard lock(mutex_);
    try {
        if (connection_ && connection_->database->hasMoved()) connection_.reset();
        if (!connection_) open();
        run(*connection_).next();
        const int changes = connection_->database->changes();
        if (connection_->database->logPages() >= longVaultLog) shortenLog();
        return changes;
    } catch (const SqliteError& error) {
        if (error.isUnreadable()) connection_.reset(); // to be looked over when it is opened again
        throw vaultError(error);
    }
}

void VaultWriter::open() {
    const auto folder = PrivateFolder::make(file_.parent_path());
    // Of several processes that find no usable file, one makes it and the others open what it made.
    const auto lock = folder.lock();
    connection_ = connect();
    if (!connection_) beginAnew();
    reader_.reopen();
}

// Null: the file cannot be used.
std::unique_ptr<VaultWriter::Connection> VaultWriter::connect() const {
    if (isGoneFromItsLog(file_)) return nullptr;
    // SQLite itself would make the file readable for others. No descriptor is opened for this: closing one
    // would drop the locks of every connection that this process has to the file.
    ::mknod(file_.c_str(), S_IFREG | 0600, 0);
    try {
        auto database = std::make_unique<SqliteDatabase>(file_, SqliteDatabase::Missing::isMade);
        const auto content = contentOf(*database);
        if (content == VaultContent::later) throw laterVersionError();
        if (content == VaultContent::foreign) return nullptr;
        if (content == VaultContent::empty)
            makeVault(*database);
        else if (!isWhole(*database))
            return nullptr;
        database->execute("PRAGMA journal_mode = WAL");
        database->execute("PRAGMA synchronous = FULL");
        database->keepLog();
        return std::make_unique<Connection>(std::move(database));
    } catch (const SqliteError& error) {
        if (error.isUnreadable()) return nullptr;
        throw;
    }
}

void VaultWriter::beginAnew() {
    const auto left = readableEntries();
    const auto kept = quarantine(file_, {"-journal", "-wal", "-shm"});
    if (!kept) throw keychainError(KeychainStatus::io, "The vault is damaged and cannot be set aside.");
    auto connection = connect();
    if (!connection) throw keychainError(KeychainStatus::io, "A new vault does not open.");
    connection->database->execute("BEGIN IMMEDIATE");
    for (const auto& entry : left) (void)Connection::run(connection->put, entry).next();
    connection->database->execute("COMMIT");
    connection_ = std::move(connection);
    help_.say(file_.string() + " is damaged. It is kept as " + kept->filename().string() +
              ", and a new keychain begins with what could be read: " + std::to_string(left.size()) +
              (left.size() == 1 ? " entry." : " entries."));
}

std::vector<SealedEntry> VaultWriter::readableEntries() const {
    std::string fault; // known already
    auto entries = VaultReader(file_).all(fault);
    std::erase_if(entries, [this](const SealedEntry& entry) { return !help_.canRead(entry); });
    return entries;
}

void VaultWriter::shortenLog() {
    if (isShortening_->exchange(true)) return;
    auto work = [file = file_, isShortening = isShortening_] {
        emptyVaultLog(file);
        isShortening->store(false);
    };
    if (help_.inBackground)
        help_.inBackground(std::move(work));
    else
        work();
}

} // namespace corvantile
