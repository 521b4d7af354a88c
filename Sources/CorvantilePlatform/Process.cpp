#include "CorvantilePlatform/Process.hpp"

#include "CorvantilePlatform/FatalError.hpp"

namespace corvantile {

Process::Process() : livePlugins_(std::make_shared<std::atomic<int>>(0)) {}

void Process::release() {
    // By index: what is released may still ask for a record, which then joins the end.
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const auto entry = entries_[i];
        entry.release(entry.record);
    }
}

Process::~Process() {
    while (!entries_.empty()) {
        const auto entry = entries_.back();
        entries_.pop_back();
        entry.destroy(entry.record);
    }
}

std::size_t Process::nextSlot() {
    static std::atomic<std::size_t> next{0};
    const auto slot = next.fetch_add(1);
    if (slot >= capacity) fatalError("Too many kinds of process records.");
    return slot;
}

void* Process::insert(std::size_t slot, Entry (*make)()) {
    const std::lock_guard lock(mutex_);
    if (void* const known = slots_[slot].load(std::memory_order_acquire)) return known;
    const auto entry = make();
    entries_.push_back(entry);
    slots_[slot].store(entry.record, std::memory_order_release);
    return entry.record;
}

} // namespace corvantile
