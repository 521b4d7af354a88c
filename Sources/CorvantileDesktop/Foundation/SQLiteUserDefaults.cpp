#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"

#include "CorvantileDesktop/Foundation/detail/DefaultsMirror.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"

#include <atomic>
#include <mutex>
#include <utility>

namespace corvantile {

struct SQLiteUserDefaults::Parts {
    explicit Parts(UserDefaultsOptions given)
        : file(std::move(given.file)),
          mirror(file, std::move(given.console), std::move(given.inBackground)) {}

    // What follows with the mutex held.

    const Dictionary& values() {
        if (hasTurned.load(std::memory_order_relaxed) && hasTurned.exchange(false)) refresh();
        return mirror.values();
    }

    void refresh() {
        mirror.refresh();
        isBehind = mirror.isBehind();
    }

    const std::filesystem::path file;
    std::atomic<bool> hasTurned{true}; // since the file was looked at, which the first call does
    std::atomic<bool> isBehind{false};
    std::mutex mutex;
    DefaultsMirror mirror;
};

SQLiteUserDefaults::SQLiteUserDefaults(UserDefaultsOptions options)
    : parts_(std::make_unique<Parts>(std::move(options))) {}

SQLiteUserDefaults::~SQLiteUserDefaults() {
    if (parts_->isBehind) parts_->mirror.catchUp();
}

void SQLiteUserDefaults::beginTurn() {
    parts_->hasTurned.store(true, std::memory_order_relaxed);
    if (!parts_->isBehind.load(std::memory_order_relaxed)) return;
    const ReportingLock lock(parts_->mutex);
    parts_->refresh();
}

std::optional<NSUserDefaults::Value> SQLiteUserDefaults::valueForKey(std::string_view key) const {
    const ReportingLock lock(parts_->mutex);
    const auto& values = parts_->values();
    const auto found = values.find(key);
    if (found == values.end()) return std::nullopt;
    return found->second;
}

void SQLiteUserDefaults::setValue(std::optional<Value> value, std::string_view forKey) {
    const ReportingLock lock(parts_->mutex);
    parts_->mirror.set(forKey, std::move(value));
    parts_->isBehind = parts_->mirror.isBehind();
}

NSUserDefaults::Dictionary SQLiteUserDefaults::dictionaryRepresentation() const {
    const ReportingLock lock(parts_->mutex);
    return parts_->values();
}

// The wait for the disk is outside the lock: others go on reading and writing.
bool SQLiteUserDefaults::synchronize() {
    {
        const ReportingLock lock(parts_->mutex);
        const bool hasCaughtUp = parts_->mirror.catchUp();
        parts_->isBehind = parts_->mirror.isBehind();
        if (!hasCaughtUp) return false;
    }
    try {
        DefaultsFile::flush(parts_->file);
        return true;
    } catch (const SqliteError&) {
        return false;
    }
}

UserDefaultsInspection SQLiteUserDefaults::inspect(const std::filesystem::path& file) {
    UserDefaultsInspection inspection;
    inspection.setAside = quarantinedFiles(file);
    if (isStateMissing(file)) return inspection;
    auto [database, fault] = inspectState(file, DefaultsFile::format);
    inspection.fault = std::move(fault);
    try {
        if (database) inspection.values = DefaultsFile(std::move(database)).load();
    } catch (const SqliteError&) {
        // The fault says so.
    }
    return inspection;
}

} // namespace corvantile
