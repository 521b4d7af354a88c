#include "CorvantileDesktop/Foundation/detail/DefaultsFile.hpp"

#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"

#include <utility>

namespace corvantile {

const StateFormat DefaultsFile::format = {
    .applicationIdentifier = 0x43565544, // "CVUD"
    .version = 1,
    .content = "user defaults",
    .tables =
        "CREATE TABLE defaults (key BLOB PRIMARY KEY NOT NULL, value ANY NOT NULL) STRICT, WITHOUT ROWID",
    .query = "SELECT key, value FROM defaults",
    .longLog = SQLiteUserDefaults::longLog};

DefaultsFile::DefaultsFile(std::unique_ptr<SqliteDatabase> database)
    : database_(std::move(database)),
      select_(database_->prepare("SELECT key, value, typeof(value) FROM defaults ORDER BY key")),
      setText_(database_->prepare("INSERT INTO defaults VALUES (?1, ?2)"
                                  " ON CONFLICT (key) DO UPDATE SET value = excluded.value")),
      setBoolean_(database_->prepare("INSERT INTO defaults VALUES (?1, ?2 = x'31')"
                                     " ON CONFLICT (key) DO UPDATE SET value = excluded.value")),
      remove_(database_->prepare("DELETE FROM defaults WHERE key = ?1")),
      version_(database_->prepare("PRAGMA data_version")) {}

NSUserDefaults::Dictionary DefaultsFile::load() {
    // Asked for before the rows: what is written in between is read now and once more later.
    loadedVersion_ = version();
    NSUserDefaults::Dictionary values;
    auto rows = select_.run();
    while (rows.next()) {
        const auto type = rows.bytes(2);
        const auto value = rows.bytes(1);
        if (type == "integer")
            values.emplace_hint(values.end(), rows.bytes(0), value != "0");
        else if (type == "blob" || type == "text")
            values.emplace_hint(values.end(), rows.bytes(0), std::string(value));
        // Anything else only a later version can have written: it is left alone.
    }
    return values;
}

void DefaultsFile::write(std::string_view key, const Change& change) {
    if (!change)
        remove_.run({key}).next();
    else if (const auto* const text = std::get_if<std::string>(&*change))
        setText_.run({key, *text}).next();
    else
        setBoolean_.run({key, std::get<bool>(*change) ? "1" : "0"}).next();
}

void DefaultsFile::write(const Changes& changes) {
    database_->transact([&] {
        for (const auto& [key, change] : changes) write(key, change);
    });
}

std::int64_t DefaultsFile::version() {
    auto run = version_.run();
    return run.next() ? run.integer(0) : 0;
}

bool DefaultsFile::hasChangedElsewhere() { return version() != loadedVersion_; }

void DefaultsFile::flush(const std::filesystem::path& file) {
    SqliteDatabase(file, SqliteDatabase::Missing::fails).flush();
}

} // namespace corvantile
