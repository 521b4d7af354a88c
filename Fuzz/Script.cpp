#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"
#include "Fuzz/Input.hpp"

#include <algorithm>
#include <cctype>

using namespace corvantile;

namespace {

// Shown keys are not put in quotes: only plain ones can be read again.
bool hasPlainKeys(const EventParameters& parameters) {
    return std::all_of(parameters.begin(), parameters.end(), [](const auto& parameter) {
        return std::all_of(parameter.first.begin(), parameter.first.end(),
                           [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
    });
}

// The form in which the tool shows parameters is one that it reads, as parameters that it shows alike.
void checkParameters(std::span<const tool::Word> words) {
    const auto parameters = tool::parseParameters(words);
    if (!parameters || !hasPlainKeys(*parameters)) return;
    const auto shown = tool::describeParameters(*parameters);
    const auto again = tool::parseParameters(tool::splitWords(shown));
    if (!again || tool::describeParameters(*again) != shown) __builtin_trap();
}

void readLine(std::string_view line) {
    const auto words = tool::splitWords(line);
    if (words.empty()) return;
    try {
        static_cast<void>(tool::parseDuration(words.front().text));
    } catch (const tool::UsageError&) {
    }
    try {
        static_cast<void>(tool::parseAmount(words.front().text));
    } catch (const tool::UsageError&) {
    }
    checkParameters(std::span(words).subspan(1));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        readLine(fuzz::text(data, size));
    } catch (const tool::UsageError&) {
        // A person is told.
    }
    return 0;
}
