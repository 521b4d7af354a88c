#include "Allocations.hpp"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>
#include <semaphore>
#include <thread>

namespace {

std::atomic<std::size_t> allocated{0};
std::atomic<std::size_t> live{0};

// With one thread the C++ library skips locked instructions, which no real app does.
std::binary_semaphore never{0};
std::thread second([] { never.acquire(); });
struct Joiner {
    ~Joiner() {
        never.release();
        second.join();
    }
} joiner;

} // namespace

Allocations Allocations::now() { return {allocated.load(), live.load()}; }

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    allocated.fetch_add(1, std::memory_order_relaxed);
    live.fetch_add(malloc_usable_size(memory), std::memory_order_relaxed);
    return memory;
}

void operator delete(void* memory) noexcept {
    live.fetch_sub(memory == nullptr ? 0 : malloc_usable_size(memory), std::memory_order_relaxed);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
