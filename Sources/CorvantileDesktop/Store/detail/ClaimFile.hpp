#pragma once

#include "CorvantileDesktop/detail/Files/Descriptor.hpp"

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <utility>

namespace corvantile {

// Which of the living processes has which transaction: locks on single bytes of an empty file, one byte for
// each number. The kernel frees them when a process is gone, however it ended. Threads: any.
class ClaimFile {
public:
    explicit ClaimFile(std::filesystem::path file) : file_(std::move(file)) {}

    // False: another process has it. True where there is no file to lock: then each process has everything.
    [[nodiscard]] bool claim(std::int64_t number);
    void release(std::int64_t number);

private:
    // The error number of locking or unlocking the byte; 0 for none.
    [[nodiscard]] int lockByte(std::int64_t number, short kind);

    const std::filesystem::path file_;
    std::mutex mutex_;
    Descriptor descriptor_; // opened by the first claim
};

} // namespace corvantile
