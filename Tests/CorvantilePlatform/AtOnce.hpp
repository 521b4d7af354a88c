#pragma once

#include <cstddef>
#include <functional>
#include <latch>
#include <thread>
#include <vector>

namespace corvantile {

// Runs all at once, each on a thread of its own, and waits for them.
inline void atOnce(const std::vector<std::function<void()>>& bodies) {
    std::latch start(static_cast<std::ptrdiff_t>(bodies.size()));
    std::vector<std::thread> threads;
    threads.reserve(bodies.size());
    for (const auto& body : bodies)
        threads.emplace_back([&start, &body] {
            start.arrive_and_wait();
            body();
        });
    for (auto& thread : threads) thread.join();
}

// The same with one body for all, which is told its number: 0, 1, …
inline void atOnce(int count, const std::function<void(int number)>& body) {
    std::vector<std::function<void()>> bodies;
    bodies.reserve(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number) bodies.emplace_back([&body, number] { body(number); });
    atOnce(bodies);
}

} // namespace corvantile
