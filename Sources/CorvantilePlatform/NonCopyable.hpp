#pragma once

namespace corvantile {

// A base, empty and without cost, of classes whose objects are known by identity: they are neither copied nor
// moved.
class NonCopyable {
public:
    NonCopyable(const NonCopyable&) = delete;
    NonCopyable& operator=(const NonCopyable&) = delete;

protected:
    NonCopyable() = default;
    ~NonCopyable() = default;
};

} // namespace corvantile
