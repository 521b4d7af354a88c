#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "Fuzz/Input.hpp"

using namespace corvantile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        static_cast<void>(readCatalogue(fuzz::text(data, size), "fuzz.storekit"));
    } catch (const NSError& error) {
        if (error.localizedDescription().find("fuzz.storekit") == std::string::npos) __builtin_trap();
    }
    return 0;
}
