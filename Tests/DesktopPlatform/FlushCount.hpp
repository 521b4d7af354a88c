#pragma once

namespace corvantile {

// How often this program has asked the kernel to flush a file, by fsync or fdatasync, on any thread.
int flushCount();

} // namespace corvantile
