#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"
#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

// What is to be written together.
struct OutboxChange {
    std::vector<OutboxPackage> packages;
    std::map<std::string, std::string, std::less<>> values;
};

// The file that keeps packages until they are delivered, and some of them after that, and a few values by
// name; Docs/Files/Outbox.md describes it. Threads: one at a time; any number of processes. Errors:
// SqliteError.
class OutboxFile {
public:
    static const StateFormat format;

    // How many delivered packages are kept to be looked at, and how much of each and of its answer (bytes).
    static constexpr int keptPackages = 1000;
    static constexpr std::size_t keptBytes = 4096;

    explicit OutboxFile(std::unique_ptr<SqliteDatabase> database);

    // Survives the end of the process once the call has returned.
    void add(const OutboxPackage& package);
    // Between `begin` and `commit` or `rollBack`, nobody else writes.
    void begin();
    void commit();
    void rollBack();

    // Adds a package in any state, unless it is there.
    void addOnce(const OutboxPackage& package);
    // Writes down an attempt to deliver it.
    void record(const OutboxPackage& package);

    // The first that waits, after that number.
    [[nodiscard]] std::optional<OutboxPackage> firstWaiting(std::int64_t after = 0) const;
    [[nodiscard]] std::optional<OutboxPackage> newest() const;
    [[nodiscard]] std::vector<OutboxPackage> packages() const;

    [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
    void setValue(std::string_view name, std::string_view value);

    // The name leads to another file by now, or to none.
    [[nodiscard]] bool hasMoved() const { return database_->hasMoved(); }
    [[nodiscard]] int logPages() const { return database_->logPages(); }

private:
    const std::unique_ptr<SqliteDatabase> database_;
    const std::array<SqliteStatement, 3> add_; // by kind
    const SqliteStatement addOnce_;
    const SqliteStatement record_;
    const SqliteStatement recordUnnumbered_; // reads the whole table
    const SqliteStatement prune_;
    const SqliteStatement firstWaiting_;
    const SqliteStatement newest_;
    const SqliteStatement all_;
    const SqliteStatement value_;
    const SqliteStatement setValue_;
    std::int64_t delivered_ = 0; // nothing up to that number waits
};

// Looks at a file as it stands; nothing is set aside.
[[nodiscard]] OutboxInspection inspectOutbox(const std::filesystem::path& file);

} // namespace corvantile
