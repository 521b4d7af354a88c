#include "Fuzz/Input.hpp"
#include "Tools/corvantile/Refusal.hpp"
#include "Tools/corvantile/Values.hpp"
#include "Tools/corvantile/Words.hpp"

#include <span>

using namespace corvantile;

namespace {

// What is read as parameters must read alike once more in the form in which the tool shows it.
void checkParameters(std::span<const tool::Word> words) {
    const auto parameters = tool::parseParameters(words);
    if (!parameters) return;
    const auto again = tool::splitWords(tool::describeParameters(*parameters));
    if (tool::parseParameters(again) != parameters) __builtin_trap();
}

void readLine(std::string_view line) {
    const auto words = tool::splitWords(line);
    if (words.empty()) return;
    try {
        static_cast<void>(tool::parseDuration(words.front().text));
    } catch (const tool::Refusal&) {
    }
    try {
        static_cast<void>(tool::parseAmount(words.front().text));
    } catch (const tool::Refusal&) {
    }
    checkParameters(std::span(words).subspan(1));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        readLine(fuzz::text(data, size));
    } catch (const tool::Refusal&) {
        // A person is told.
    }
    return 0;
}
