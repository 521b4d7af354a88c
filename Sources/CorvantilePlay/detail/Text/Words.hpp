#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

struct Word {
    std::string text;
    std::size_t equals = std::string::npos; // where in `text` the first `=` outside quotes stands
    bool isValueQuoted = false;             // a quoted part begins right after it

    friend bool operator==(const Word&, const Word&) = default;
};

using Words = std::vector<Word>;

// The words of a command line, without its comment: a `#` that begins a word begins one. Blanks part words,
// save in quotes, which open at the beginning of a word or after a `=`: in 'single' ones everything stands
// for itself, in "double" ones \" \\ \n and \t are escapes. A quote that never ends is a UsageError.
[[nodiscard]] Words splitWords(std::string_view line);

} // namespace corvantile::tool
