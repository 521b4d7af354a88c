#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "Fuzz/Input.hpp"

using namespace corvantile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        JSONDecoder::decodeArray(fuzz::text(data, size), [](const KeyedDecodingContainer& row) {
            const auto event = AdjustEvent::decode(row);
            const auto again = decodeJSON<AdjustEvent>(encodeJSON(event));
            if (again.name != event.name || again.token != event.token) __builtin_trap();
        });
    } catch (const NSError& error) {
        if (error.localizedDescription().empty()) __builtin_trap();
    }
    return 0;
}
