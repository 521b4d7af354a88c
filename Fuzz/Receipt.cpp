#include "CorvantileIAP/StoreReceipt.hpp"
#include "Fuzz/Input.hpp"

#include <algorithm>

using namespace corvantile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        auto records = readStoreReceipt(fuzz::text(data, size)).transactions;
        std::sort(records.begin(), records.end());
        // Purchase analytics counts on an order in which no two records change places.
        for (std::size_t next = 1; next < records.size(); ++next)
            if (records[next] < records[next - 1]) __builtin_trap();
    } catch (const NSError& error) {
        if (error.localizedDescription().empty()) __builtin_trap();
    }
    return 0;
}
