#include "CorvantileReactive/Hooks.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Platform.hpp"

#include <memory>
#include <mutex>
#include <utility>

namespace corvantile::rx {

namespace {

struct HooksRecord {
    std::mutex mutex;
    std::shared_ptr<const Hooks::UnhandledError> unhandledError;

    void release() { exchange(nullptr); }

    // The hook replaced is destroyed outside the lock.
    void exchange(std::shared_ptr<const Hooks::UnhandledError> next) {
        const std::lock_guard lock(mutex);
        unhandledError.swap(next);
    }
};

void printUnhandled([[maybe_unused]] const std::exception_ptr& error) {
#ifndef NDEBUG
    Platform::current().ports().console->print("Unhandled error happened: " + describe(error));
#endif
}

} // namespace

void Hooks::setUnhandledError(UnhandledError hook) {
    auto& record = Platform::current().process().record<HooksRecord>();
    record.exchange(hook ? std::make_shared<const UnhandledError>(std::move(hook)) : nullptr);
}

void Hooks::unhandledError(const std::exception_ptr& error) noexcept {
    if (!Platform::isInstalled()) return;
    auto& record = Platform::current().process().record<HooksRecord>();
    std::shared_ptr<const UnhandledError> hook;
    {
        const std::lock_guard lock(record.mutex);
        hook = record.unhandledError;
    }
    hook ? (*hook)(error) : printUnhandled(error);
}

} // namespace corvantile::rx
