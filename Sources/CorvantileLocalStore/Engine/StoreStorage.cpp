#include "CorvantileLocalStore/Engine/StoreStorage.hpp"

namespace corvantile {

StoreStorage::~StoreStorage() = default;

StoreStorage::Rows StoreShelf::rows(std::uint64_t& version) const {
    const std::lock_guard lock(mutex_);
    version = version_;
    return rows_;
}

std::uint64_t StoreShelf::version() const {
    const std::lock_guard lock(mutex_);
    return version_;
}

bool StoreShelf::commit(const StoreStorage::Changes& changes, std::uint64_t& version) {
    const std::lock_guard lock(mutex_);
    if (version != version_) return false;
    for (const auto& [key, text] : changes) {
        if (text)
            rows_.insert_or_assign(key, *text);
        else
            rows_.erase(key);
    }
    version = ++version_;
    return true;
}

StoreStorage::Rows InMemoryStoreStorage::load() { return shelf_.rows(version_); }

bool InMemoryStoreStorage::commit(const Changes& changes) { return shelf_.commit(changes, version_); }

} // namespace corvantile
