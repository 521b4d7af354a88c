#include "CorvantileDesktop/Store/detail/StoreFile.hpp"

#include "CorvantileDesktop/detail/Files/Quarantine.hpp"
#include "CorvantileLocalStore/LocalStoreError.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"

#include <sqlite3.h>

#include <system_error>
#include <utility>

namespace corvantile {

namespace {

constexpr const char* countersName = "store-counters";

// A SqliteError leaves here as the store's own error.
template <class Act>
auto translated(const std::filesystem::path& file, Act act) {
    try {
        return act();
    } catch (const SqliteError& error) {
        throw localStoreError(LocalStoreErrorCode::storage,
                              file.filename().string() + " cannot be used: " + error.what() + ".");
    }
}

} // namespace

const StateFormat StoreFile::format = {
    .applicationIdentifier = 0x43565354, // "CVST"
    .version = 1,
    .content = "local store",
    .tables =
        "CREATE TABLE records (key BLOB PRIMARY KEY NOT NULL, value BLOB NOT NULL) STRICT, WITHOUT ROWID",
    .query = "SELECT key, value FROM records",
    .longLog = 1000};

struct StoreFile::Connection {
    explicit Connection(std::unique_ptr<SqliteDatabase> opened)
        : database(std::move(opened)),
          select(database->prepare("SELECT key, value FROM records ORDER BY key")),
          put(database->prepare("INSERT INTO records VALUES (?1, ?2)"
                                " ON CONFLICT (key) DO UPDATE SET value = excluded.value")),
          remove(database->prepare("DELETE FROM records WHERE key = ?1")),
          version(database->prepare("PRAGMA data_version")) {}

    [[nodiscard]] std::int64_t dataVersion() const {
        auto run = version.run();
        return run.next() ? run.integer(0) : 0;
    }

    [[nodiscard]] Rows load() const {
        Rows loaded;
        auto rows = select.run();
        while (rows.next()) loaded.emplace_hint(loaded.end(), rows.bytes(0), rows.bytes(1));
        return loaded;
    }

    void write(const Changes& changes) const {
        for (const auto& [key, value] : changes) {
            if (value)
                put.run({key, *value}).next();
            else
                remove.run({key}).next();
        }
    }

    // False: another connection has committed since `loaded`.
    [[nodiscard]] bool commit(const Changes& changes, std::int64_t loaded, const Claims& claimed,
                              ClaimFile& claims) const {
        bool isUpToDate = false;
        try {
            database->transact([&] {
                isUpToDate = dataVersion() == loaded;
                if (!isUpToDate) return;
                write(changes);
                for (const auto number : claimed) static_cast<void>(claims.claim(number));
            });
        } catch (const SqliteError&) {
            for (const auto number : claimed) claims.release(number); // they do not exist
            throw;
        }
        return isUpToDate;
    }

    const std::unique_ptr<SqliteDatabase> database;
    const SqliteStatement select;
    const SqliteStatement put;
    const SqliteStatement remove;
    const SqliteStatement version;
};

StoreFile::StoreFile(StoreFileOptions options)
    : file_(std::move(options.file)),
      console_(std::move(options.console)),
      hasPast_(options.hasPast),
      counters_(file_.parent_path() / countersName),
      claims_(file_.parent_path() / "store-claims"),
      trimmer_(file_, format, std::move(options.inBackground)) {}

StoreFile::~StoreFile() = default;

void StoreFile::beginCounters() {
    std::error_code error;
    if (!hasPast_ && !std::filesystem::exists(file_, error) && quarantinedFiles(file_).empty())
        counters_.begin();
}

void StoreFile::open() {
    connection_.reset();
    auto opened = openOrBeginState(file_, format, nullptr, isDoubtful_);
    if (!opened.loss.empty()) printAfterLocks(console_, "The store began anew: " + opened.loss);
    haveCommitsBeenLost_ = !opened.reports.empty();
    for (const auto& line : opened.reports) printAfterLocks(console_, "The store: " + line);
    connection_ = std::make_unique<Connection>(std::move(opened.database));
}

StoreStorage::Rows StoreFile::load() {
    return translated(file_, [&] {
        try {
            return rows();
        } catch (const SqliteError& error) {
            if (!connection_ && isInReadOnlyFolder(file_)) return rowsOfImage();
            if (!error.isUnreadable()) throw;
        }
        // The damaged file keeps its log: both are moved aside.
        if (connection_) connection_->database->setEmptiesLogAtEnd(false);
        connection_.reset();
        isDoubtful_ = true;
        return rows();
    });
}

StoreStorage::Rows StoreFile::rows() {
    if (!connection_ || connection_->database->hasMoved()) open();
    // Asked for before the rows: what is written in between is read now and once more later.
    loadedVersion_ = connection_->dataVersion();
    auto loaded = connection_->load();
    isDoubtful_ = false;
    return loaded;
}

StoreStorage::Rows StoreFile::rowsOfImage() const { return Connection(openStateImage(file_, format)).load(); }

std::optional<StoreStorage::Counters> StoreFile::counters(bool areRead) {
    if (!std::exchange(haveCommitsBeenLost_, false) && areRead) return std::nullopt;
    if (auto kept = counters_.read()) return kept;
    const auto file = file_.parent_path() / countersName;
    std::error_code error;
    const bool hasPast =
        hasPast_ ||
        std::filesystem::symlink_status(file, error).type() != std::filesystem::file_type::not_found ||
        !quarantinedFiles(file_).empty() || !quarantinedFiles(file).empty();
    return hasPast ? std::optional(countersByTime()) : std::nullopt;
}

bool StoreFile::hasChangedElsewhere() {
    return translated(file_, [&] {
        return !connection_ || connection_->database->hasMoved() ||
               connection_->dataVersion() != loadedVersion_;
    });
}

bool StoreFile::commit(const Changes& changes, const Claims& claimed) {
    return translated(file_, [&] {
        if (!connection_) throw SqliteError(SQLITE_READONLY, "its folder is read-only");
        if (!connection_->commit(changes, loadedVersion_, claimed, claims_)) return false;
        trimmer_.noteWrite(*connection_->database);
        return true;
    });
}

std::string faultOfStoreFile(const std::filesystem::path& file) {
    return inspectState(file, StoreFile::format).fault;
}

} // namespace corvantile
