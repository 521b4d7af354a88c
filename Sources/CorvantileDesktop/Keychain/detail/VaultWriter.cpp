#include "CorvantileDesktop/Keychain/detail/VaultWriter.hpp"

#include "CorvantileDesktop/Keychain/detail/PrivateFolder.hpp"
#include "CorvantileDesktop/Keychain/detail/VaultReader.hpp"

#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"

#include <utility>
#include <vector>

namespace corvantile {

namespace {

constexpr const char* putStatement =
    "INSERT INTO entries (service, account, key, box) VALUES (?1, ?2, ?3, ?4)"
    " ON CONFLICT DO UPDATE SET key = excluded.key, box = excluded.box";

} // namespace

struct VaultWriter::Connection {
    explicit Connection(std::unique_ptr<SqliteDatabase> opened) : database(std::move(opened)) {}

    std::unique_ptr<SqliteDatabase> database;
    SqliteStatement add = database->prepare(
        "INSERT INTO entries (service, account, key, box) VALUES (?1, ?2, ?3, ?4) ON CONFLICT DO NOTHING");
    SqliteStatement put = database->prepare(putStatement);
    SqliteStatement remove = database->prepare("DELETE FROM entries WHERE service = ?1 AND account = ?2");

    [[nodiscard]] static SqliteRun run(const SqliteStatement& statement, const SealedEntry& entry) {
        return statement.run({entry.service, entry.account, entry.keyIdentifier, entry.box});
    }
};

VaultWriter::VaultWriter(std::filesystem::path file, VaultReader& reader, Options options)
    : file_(std::move(file)),
      reader_(reader),
      options_(std::move(options)),
      trimmer_(file_, vaultFormat, options_.inBackground) {}

// The last connection to be closed empties the log, and that is to be this one.
VaultWriter::~VaultWriter() { reader_.reopen(); }

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
    const ReportingLock lock(mutex_);
    try {
        if (connection_ && connection_->database->hasMoved()) connection_.reset();
        if (!connection_) open();
        run(*connection_).next();
        const int changes = connection_->database->changes();
        trimmer_.noteWrite(*connection_->database);
        return changes;
    } catch (const SqliteError& error) {
        if (error.isUnreadable()) giveUp();
        throw vaultError(error);
    }
}

// The file is looked over when it is opened again, with its log.
void VaultWriter::giveUp() {
    if (connection_) connection_->database->setEmptiesLogAtEnd(false);
    connection_.reset();
}

void VaultWriter::open() {
    static_cast<void>(PrivateFolder::make(file_.parent_path()));
    auto opened = openOrBeginState(file_, vaultFormat, [&](SqliteDatabase& fresh) {
        const auto put = fresh.prepare(putStatement);
        for (const auto& entry : readableEntries()) Connection::run(put, entry).next();
    });
    for (const auto& line : opened.reports) options_.report("Keychain: " + line);
    // Counted in the file: a killed process may have filled it.
    const auto kept = opened.setAside ? opened.database->integer("SELECT count(*) FROM entries") : 0;
    if (opened.setAside)
        options_.report(file_.string() + " is damaged. It is kept as " +
                        opened.setAside->filename().string() +
                        ", and a new keychain begins with what could be read: " + std::to_string(kept) +
                        (kept == 1 ? " entry." : " entries."));
    connection_ = std::make_unique<Connection>(std::move(opened.database));
    reader_.reopen();
}

std::vector<SealedEntry> VaultWriter::readableEntries() const {
    std::string fault; // known already
    auto entries = VaultReader(file_).all(fault);
    std::erase_if(entries, [this](const SealedEntry& entry) { return !options_.canRead(entry); });
    return entries;
}

} // namespace corvantile
