#include "CorvantileIAP/InappHelper.hpp"

#include "Platform/Platform.hpp"

#include <atomic>

namespace corvantile {

namespace {

struct Settings {
    std::atomic<bool> debug{false};
};

Settings& settings() { return Platform::current().process().record<Settings>(); }

} // namespace

bool InappHelper::debug() { return settings().debug.load(std::memory_order_relaxed); }

void InappHelper::setDebug(bool debug) { settings().debug.store(debug, std::memory_order_relaxed); }

} // namespace corvantile
