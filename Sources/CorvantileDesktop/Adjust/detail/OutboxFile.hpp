#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"
#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvantile {

// The values that are kept beside the packages, as texts by name.
namespace outboxmemory {

inline constexpr std::string_view sessions = "sessions";         // how many there have been
inline constexpr std::string_view lastActive = "last-active";    // Unix seconds
inline constexpr std::string_view pushToken = "push-token";      // hex
inline constexpr std::string_view transactions = "transactions"; // the last ones, as a form
inline constexpr std::string_view attribution = "attribution";   // what the server reported last

inline constexpr std::array all = {sessions, lastActive, pushToken, transactions, attribution};

// How many transactions are remembered.
inline constexpr std::size_t keptTransactions = 10;

// 0 without a text.
[[nodiscard]] std::int64_t number(const std::optional<std::string>& text);

// The transactions in `known` and one more, without the oldest if there are too many; nullopt when that one
// is in it.
[[nodiscard]] std::optional<std::string> withTransaction(const std::optional<std::string>& known,
                                                         const std::string& identifier);

// What to write where the file has `filed`, and a process that could not always read it has `unwritten`: it
// may have begun from nothing.
[[nodiscard]] std::string merged(std::string_view name, const std::optional<std::string>& filed,
                                 const std::string& unwritten);

} // namespace outboxmemory

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
    // What `work` writes is written as a whole or not at all, and nothing else is written meanwhile.
    template <class Work>
    void transact(Work work) {
        database_->transact(std::move(work));
    }

    // Adds a package in any state, unless it is there.
    void addOnce(const OutboxPackage& package);
    // Stores the result of an attempt to deliver it.
    void record(const OutboxPackage& package);

    // The first that waits, after that number.
    [[nodiscard]] std::optional<OutboxPackage> firstWaiting(std::int64_t after = 0) const;
    [[nodiscard]] std::optional<OutboxPackage> newest() const;
    [[nodiscard]] std::vector<OutboxPackage> packages() const;
    // The same of a file that may be damaged: what can be read from both ends.
    [[nodiscard]] std::vector<OutboxPackage> readablePackages() const;

    [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
    void setValue(std::string_view name, std::string_view value);

    [[nodiscard]] SqliteDatabase& database() const { return *database_; }

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
    const SqliteStatement allFromEnd_; // after a number
    const SqliteStatement value_;
    const SqliteStatement setValue_;
    std::int64_t delivered_ = 0; // nothing up to that number waits
};

// Writes what can be read of a damaged file into a new one.
void takeOverPackages(const std::filesystem::path& damaged, SqliteDatabase& fresh);

// Reads a file as it stands; nothing is moved aside.
[[nodiscard]] OutboxInspection inspectOutbox(const std::filesystem::path& file);

} // namespace corvantile
