#pragma once

#include <utility>

#include <unistd.h>

namespace corvantile {

// Owns a file descriptor. Negative: none.
class Descriptor {
public:
    explicit Descriptor(int value = -1) : value_(value) {}
    Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~Descriptor() {
        if (value_ >= 0) ::close(value_);
    }

    [[nodiscard]] int value() const { return value_; }
    // The caller closes it from now on.
    [[nodiscard]] int release() { return std::exchange(value_, -1); }
    explicit operator bool() const { return value_ >= 0; }

private:
    int value_;
};

// Locks an open file or folder against other processes until it is closed. Waits up to five seconds for the
// process that holds the lock. Returns 0 or the error number: EWOULDBLOCK on time-out.
[[nodiscard]] int lockFile(const Descriptor& file);

} // namespace corvantile
