#include "CorvantileDesktop/Keychain/detail/VaultReader.hpp"

#include <sqlite3.h>

#include <iterator>
#include <utility>

namespace corvantile {

struct VaultReader::Connection {
    explicit Connection(std::unique_ptr<SqliteDatabase> opened) : database(std::move(opened)) {}

    std::unique_ptr<SqliteDatabase> database;
    SqliteStatement find =
        database->prepare("SELECT key, box FROM entries WHERE service = ?1 AND account = ?2");
    SqliteStatement ascending =
        database->prepare("SELECT service, account, key, box FROM entries ORDER BY service, account");
    SqliteStatement descending = database->prepare(
        "SELECT service, account, key, box FROM entries ORDER BY service DESC, account DESC");
};

VaultReader::VaultReader(std::filesystem::path file, Source source)
    : file_(std::move(file)), source_(source) {}
VaultReader::~VaultReader() = default;

std::optional<SealedEntry> VaultReader::find(std::string_view account, std::string_view service) {
    const std::lock_guard lock(mutex_);
    try {
        if (!open()) return std::nullopt;
        auto run = connection_->find.run({service, account});
        if (!run.next()) return std::nullopt;
        return SealedEntry{std::string(service), std::string(account), std::string(run.bytes(0)),
                           std::string(run.bytes(1))};
    } catch (const SqliteError& error) {
        throw vaultError(error);
    }
}

std::vector<SealedEntry> VaultReader::all(std::string& fault) {
    const std::lock_guard lock(mutex_);
    std::vector<SealedEntry> entries;
    try {
        if (open()) append(entries, connection_->ascending);
    } catch (const SqliteError& error) {
        fault = vaultError(error).localizedDescription();
        if (connection_) appendFromTheOtherEnd(entries);
    } catch (const NSError& error) {
        fault = error.localizedDescription();
    }
    return entries;
}

void VaultReader::append(std::vector<SealedEntry>& entries, const SqliteStatement& select) {
    auto run = select.run();
    while (run.next())
        entries.push_back({std::string(run.bytes(0)), std::string(run.bytes(1)), std::string(run.bytes(2)),
                           std::string(run.bytes(3))});
}

// What lies behind a damaged page, which stopped the way from the beginning.
void VaultReader::appendFromTheOtherEnd(std::vector<SealedEntry>& entries) {
    std::vector<SealedEntry> reversed;
    try {
        append(reversed, connection_->descending);
    } catch (const SqliteError&) {
        // It stops at the damaged page again.
    }
    entries.insert(entries.end(), std::make_move_iterator(reversed.rbegin()),
                   std::make_move_iterator(reversed.rend()));
}

void VaultReader::reopen() {
    const std::lock_guard lock(mutex_);
    connection_.reset();
}

bool VaultReader::open() {
    if (connection_ && !isImageOld()) return true;
    connection_.reset();
    if (file_.empty() || isStateMissing(file_)) return false;
    const auto found = FileIdentity::of(file_);
    if (unusable_ && found && unusable_->file == *found) throw unusable_->error;
    unusable_.reset();
    try {
        openConnection(found);
    } catch (const SqliteError& error) {
        if (found && (error.isUnreadable() || error.code() == SQLITE_MISMATCH))
            unusable_.emplace(Unusable{*found, vaultError(error)});
        throw;
    }
    return true;
}

void VaultReader::openConnection(const std::optional<FileIdentity>& found) {
    isImage_ = !found || source_ == Source::image || isInReadOnlyFolder(file_);
    imaged_ = found;
    connection_ = std::make_unique<Connection>(isImage_ ? openStateImage(file_, vaultFormat)
                                                        : openUncheckedState(file_, vaultFormat));
}

bool VaultReader::isImageOld() const {
    return isImage_ && source_ == Source::file && FileIdentity::of(file_) != imaged_;
}

} // namespace corvantile
