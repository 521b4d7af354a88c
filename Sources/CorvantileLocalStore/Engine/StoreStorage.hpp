#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

// Where a store keeps what it remembers: texts by key. Threads: one at a time; other processes may keep the
// same store. Errors: NSError (localStoreErrorDomain, storage).
class CORVANTILE_API StoreStorage : NonCopyable {
public:
    using Rows = std::map<std::string, std::string, std::less<>>;
    using Changes = std::map<std::string, std::optional<std::string>, std::less<>>; // no value: the row goes
    using Claims = std::vector<std::int64_t>;                                       // numbers of transactions

    // The next numbers of a transaction's place in the queue, and of its identifier.
    struct Counters {
        std::int64_t number = 1;
        std::int64_t identifier = 200000000000001;
    };

    virtual ~StoreStorage();

    [[nodiscard]] virtual Rows load() = 0;

    // Another process has committed since the last `load`.
    [[nodiscard]] virtual bool hasChangedElsewhere() = 0;

    // All of it survives the end of the process once the call has returned true. False: nothing was written,
    // because another process has committed since the last `load`. The transactions `claimed` are claimed
    // before anybody else can see them, if it is true.
    [[nodiscard]] virtual bool commit(const Changes& changes, const Claims& claimed) = 0;

    // The counters that a store goes on with whose own are gone (`areRead` is false), or are older than what
    // was counted: above whatever that was. nullopt where its own will do. After `load`.
    [[nodiscard]] virtual std::optional<Counters> counters(bool areRead);
    // Before these numbers are used: they must never be used again, even if everything else is lost.
    virtual void keepCounters(const Counters& next);

    // Hands a transaction to this process, until it is released or the process is gone. False: another one,
    // which lives, has it. A storage that no other process can see needs neither. Threads: any.
    [[nodiscard]] virtual bool claim(std::int64_t number);
    virtual void release(std::int64_t number);
};

// Rows in memory, which several storages may share. Threads: any.
class CORVANTILE_API StoreShelf {
public:
    [[nodiscard]] StoreStorage::Rows rows(std::uint64_t& version) const;
    [[nodiscard]] std::uint64_t version() const;
    // `version` is the one that the changes build upon, and the one that they made. `owner` stands for a
    // process.
    [[nodiscard]] bool commit(const StoreStorage::Changes& changes, std::uint64_t& version,
                              const StoreStorage::Claims& claimed, const void* owner);
    [[nodiscard]] bool claim(std::int64_t number, const void* owner);
    void release(std::int64_t number, const void* owner);
    void releaseAll(const void* owner);

private:
    mutable std::mutex mutex_;
    StoreStorage::Rows rows_;
    std::uint64_t version_ = 0;
    std::map<std::int64_t, const void*> owners_; // of transactions
};

// A storage on a shelf of its own.
class CORVANTILE_API InMemoryStoreStorage final : public StoreStorage {
public:
    [[nodiscard]] Rows load() override;
    [[nodiscard]] bool hasChangedElsewhere() override { return false; }
    [[nodiscard]] bool commit(const Changes& changes, const Claims& claimed) override;

private:
    StoreShelf shelf_;
    std::uint64_t version_ = 0;
};

} // namespace corvantile
