#include "CorvantileLocalStore/Engine/StoreStorage.hpp"

namespace corvantile {

StoreStorage::~StoreStorage() = default;
std::optional<StoreStorage::Counters> StoreStorage::counters(bool) { return std::nullopt; }
void StoreStorage::keepCounters(const Counters&) {}
bool StoreStorage::claim(std::int64_t) { return true; }
void StoreStorage::release(std::int64_t) {}

StoreStorage::Rows StoreShelf::rows(std::uint64_t& version) const {
    const std::lock_guard lock(mutex_);
    version = version_;
    return rows_;
}

std::uint64_t StoreShelf::version() const {
    const std::lock_guard lock(mutex_);
    return version_;
}

bool StoreShelf::commit(const StoreStorage::Changes& changes, std::uint64_t& version,
                        const StoreStorage::Claims& claimed, const void* owner) {
    const std::lock_guard lock(mutex_);
    if (version != version_) return false;
    for (const auto& [key, text] : changes) {
        if (text)
            rows_.insert_or_assign(key, *text);
        else
            rows_.erase(key);
    }
    for (const auto number : claimed) owners_[number] = owner;
    version = ++version_;
    return true;
}

bool StoreShelf::claim(std::int64_t number, const void* owner) {
    const std::lock_guard lock(mutex_);
    return owners_.try_emplace(number, owner).first->second == owner;
}

void StoreShelf::release(std::int64_t number, const void* owner) {
    const std::lock_guard lock(mutex_);
    const auto found = owners_.find(number);
    if (found != owners_.end() && found->second == owner) owners_.erase(found);
}

void StoreShelf::releaseAll(const void* owner) {
    const std::lock_guard lock(mutex_);
    std::erase_if(owners_, [&](const auto& entry) { return entry.second == owner; });
}

StoreStorage::Rows InMemoryStoreStorage::load() { return shelf_.rows(version_); }

bool InMemoryStoreStorage::commit(const Changes& changes, const Claims& claimed) {
    return shelf_.commit(changes, version_, claimed, this);
}

} // namespace corvantile
