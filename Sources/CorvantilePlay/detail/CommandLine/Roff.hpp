#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace corvantile::tool {

// Writes a page in roff with the `man` macros. What it is given is text: nothing in it is markup.
class Roff {
public:
    void title(std::string_view name, std::string_view source);
    void section(std::string_view name);
    void subsection(std::string_view name);
    void text(std::string_view text);
    void bold(std::string_view text);
    void lineBreak();
    // A tag, and what it means.
    void item(std::string_view tag, std::string_view text);

    [[nodiscard]] std::string text() && { return std::move(roff_); }

private:
    void macro(std::string_view name, std::string_view argument);

    std::string roff_;
};

} // namespace corvantile::tool
