#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace corvantile {

// Where a store keeps what it remembers: texts by key. Threads: one at a time; other processes may keep the
// same store. Errors: NSError (localStoreErrorDomain, storage).
class CORVANTILE_API StoreStorage : NonCopyable {
public:
    using Rows = std::map<std::string, std::string, std::less<>>;
    using Changes = std::map<std::string, std::optional<std::string>, std::less<>>; // no value: the row goes

    virtual ~StoreStorage();

    [[nodiscard]] virtual Rows load() = 0;

    // Another process has committed since the last `load`.
    [[nodiscard]] virtual bool hasChangedElsewhere() = 0;

    // All of it survives the end of the process once the call has returned true. False: nothing was written,
    // because another process has committed since the last `load`.
    [[nodiscard]] virtual bool commit(const Changes& changes) = 0;
};

// Rows in memory, which several storages may share. Threads: any.
class CORVANTILE_API StoreShelf {
public:
    [[nodiscard]] StoreStorage::Rows rows(std::uint64_t& version) const;
    [[nodiscard]] std::uint64_t version() const;
    // `version` is the one that the changes build upon, and the one that they made.
    [[nodiscard]] bool commit(const StoreStorage::Changes& changes, std::uint64_t& version);

private:
    mutable std::mutex mutex_;
    StoreStorage::Rows rows_;
    std::uint64_t version_ = 0;
};

// A storage on a shelf of its own.
class CORVANTILE_API InMemoryStoreStorage final : public StoreStorage {
public:
    [[nodiscard]] Rows load() override;
    [[nodiscard]] bool hasChangedElsewhere() override { return false; }
    [[nodiscard]] bool commit(const Changes& changes) override;

private:
    StoreShelf shelf_;
    std::uint64_t version_ = 0;
};

} // namespace corvantile
