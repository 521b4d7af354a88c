#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace corvantile {

// Everything that is process-wide, kept by type, so that a new platform really is a new process.
// Each module declares a small struct of its own and asks for it: `process.record<Switches>()`. The record is
// made on first use and lives until the process ends. A record that owns objects of the host lets them go in
// `void release()`, which is called for every record before the first is destroyed.
// A record that several shared libraries ask for carries CORVANTILE_API; one in a source file needs nothing.
// Threads: any; a look-up of an existing record is two atomic loads.
class CORVANTILE_API Process : NonCopyable {
public:
    Process();
    // Destroys the records, last made first.
    ~Process();

    // Calls `release()` of every record that has one, first made first. The ports must still stand.
    void release();

    template <class Record>
    [[nodiscard]] Record& record() {
        const auto slot = slotOf<Record>();
        if (void* const known = slots_[slot].load(std::memory_order_acquire))
            return *static_cast<Record*>(known);
        return *static_cast<Record*>(insert(slot, [] { return makeEntry<Record>(); }));
    }

    // How many plug-ins are alive. It outlives the process, so that a late plug-in can still count itself
    // out.
    [[nodiscard]] const std::shared_ptr<std::atomic<int>>& livePlugins() const { return livePlugins_; }

private:
    struct Entry {
        void* record = nullptr;
        void (*release)(void*) = nullptr;
        void (*destroy)(void*) = nullptr;
    };

    template <class Record>
    static Entry makeEntry() {
        return {new Record(),
                [](void* record) {
                    if constexpr (requires(Record & r) { r.release(); })
                        static_cast<Record*>(record)->release();
                },
                [](void* record) { delete static_cast<Record*>(record); }};
    }

    template <class Record>
    static std::size_t slotOf() {
        static const std::size_t slot = nextSlot();
        return slot;
    }

    static std::size_t nextSlot();
    void* insert(std::size_t slot, Entry (*make)());

    static constexpr std::size_t capacity = 64;
    std::atomic<void*> slots_[capacity] = {};
    std::recursive_mutex mutex_; // a record may ask for another while it is made
    std::vector<Entry> entries_;
    std::shared_ptr<std::atomic<int>> livePlugins_;
};

} // namespace corvantile
