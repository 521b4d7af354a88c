#include "Tools/corvantile/Description/AppDescription.hpp"
#include "Fuzz/Input.hpp"
#include "Tools/corvantile/Refusal.hpp"
#include "Tools/corvantile/TemporaryFolder.hpp"

#include <fstream>

using namespace corvantile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const tool::TemporaryFolder folder;
    static const auto registry = tool::frameworkRegistry();
    std::ofstream(folder.path() / "app.json", std::ios::binary) << fuzz::text(data, size);
    try {
        static_cast<void>(tool::readAppDescription(folder.path(), registry));
    } catch (const tool::Refusal& refusal) {
        if (refusal.what()[0] == '\0') __builtin_trap();
    }
    return 0;
}
