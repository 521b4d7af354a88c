#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <memory>
#include <mutex>
#include <string>

namespace corvantile {

class Console;

// A host's console may call what printed to it. So what holds a lock collects its lines, and they are printed
// once this thread has released its locks.

// Prints at once, or at the end of this thread's outermost HeldLines. The console may be null.
CORVANTILE_API void printAfterLocks(const std::shared_ptr<Console>& console, std::string text);

// Holds back what this thread prints through `printAfterLocks`. Where a lock guards less than a scope, this
// comes before it.
class CORVANTILE_API HeldLines : NonCopyable {
public:
    HeldLines();
    ~HeldLines();
};

// A lock_guard under which `printAfterLocks` may be called.
template <class Mutex>
class ReportingLock : NonCopyable {
public:
    explicit ReportingLock(Mutex& mutex) : lock_(mutex) {}

private:
    const HeldLines lines_; // printed when the lock is released
    const std::lock_guard<Mutex> lock_;
};

} // namespace corvantile
