#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "Fuzz/Input.hpp"

using namespace corvantile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const tool::TemporaryFolder empty; // for the files that a description names
    static const auto registry = corvantile::PlayRegistry::framework();
    try {
        static_cast<void>(tool::parseAppDescription(std::string(fuzz::text(data, size)),
                                                    empty.path() / "app.json", registry));
    } catch (const tool::UsageError& error) {
        if (error.what()[0] == '\0') __builtin_trap();
    }
    return 0;
}
