#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// What libFuzzer calls: once for each input, in one process for all. A crash, a failed check
// (`__builtin_trap`), a leak, or a second without an answer is a find.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace corvantile::fuzz {

[[nodiscard]] inline std::string_view text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace corvantile::fuzz
