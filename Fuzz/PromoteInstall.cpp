#include "Corvantile/Config/PromoteInstall.hpp"
#include "Fuzz/Input.hpp"
#include "Platform/Foundation/NSError.hpp"

using namespace corvantile;

// What is read stays the same through its own text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto record = decodeJSON<PromoteInstall>(fuzz::text(data, size));
        if (!(decodeJSON<PromoteInstall>(encodeJSON(record)) == record)) __builtin_trap();
    } catch (const NSError& error) {
        if (error.localizedDescription().empty()) __builtin_trap();
    }
    return 0;
}
