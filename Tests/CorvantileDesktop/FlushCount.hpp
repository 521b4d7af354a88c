#pragma once

#include <functional>

namespace corvantile {

// How often this program asks the kernel to flush a file meanwhile, by fsync or fdatasync, on any thread.
int flushesOf(const std::function<void()>& work);

} // namespace corvantile
