#include "HostCore/HostCore.hpp"

#include "CorvantilePlatform/Platform.hpp"

#include <atomic>
#include <mutex>
#include <utility>

namespace corvantile {

namespace {

struct Settings {
    std::atomic<bool> debug{false};
    std::mutex mutex; // guards omitBlock
    HostCore::OmitBlock omitBlock;

    // What is replaced may own objects of the host, whose end must not meet the lock.
    void replaceOmitBlock(HostCore::OmitBlock next) {
        const std::lock_guard lock(mutex);
        omitBlock.swap(next);
    }

    void release() { replaceOmitBlock(nullptr); }
};

Settings& settings() { return Platform::current().process().record<Settings>(); }

} // namespace

bool HostCore::debug() { return settings().debug.load(std::memory_order_relaxed); }

void HostCore::setDebug(bool debug) { settings().debug.store(debug, std::memory_order_relaxed); }

HostCore::OmitBlock HostCore::omitBlock() {
    auto& known = settings();
    const std::lock_guard lock(known.mutex);
    return known.omitBlock;
}

void HostCore::setOmitBlock(OmitBlock block) { settings().replaceOmitBlock(std::move(block)); }

} // namespace corvantile
