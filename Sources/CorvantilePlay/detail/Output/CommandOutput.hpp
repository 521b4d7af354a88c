#pragma once

#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

#include <nlohmann/json_fwd.hpp>

#include <iosfwd>
#include <string>
#include <string_view>

namespace corvantile::tool {

// What a subcommand prints on standard output, as text or as JSON lines, and the errors that it finds, which
// go to standard error as well: a script reads either. Borrows the streams.
class CommandOutput {
public:
    struct Streams {
        std::ostream& out;
        std::ostream& errors;
        bool areOne = false; // one terminal or file: an error that `out` shows is not repeated
    };

    CommandOutput(Streams streams, bool isJSON);

    [[nodiscard]] bool isJSON() const { return isJSON_; }

    // The same for programs and for people; `text` may have several lines.
    void show(std::string_view kind, const nlohmann::ordered_json& fields, std::string_view text);
    // For people alone, and a blank line if empty.
    void print(std::string_view text);
    // Something is wrong, which makes the outcome `failed`: `wrong: TEXT`, or an object with the fields and
    // an `error`.
    void showError(const std::string& text, const nlohmann::ordered_json& fields);
    // As showError, for an error that what was shown before holds already.
    void noteError(const std::string& text);

    [[nodiscard]] bool hasFailed() const { return hasFailed_; }

    // Writes what was shown so far.
    void flush();
    // `failed` if there was an error.
    [[nodiscard]] ExitCode end();

private:
    void begin();

    const Streams streams_;
    const bool isJSON_;
    bool hasBegun_ = false;
    bool hasFailed_ = false;
};

} // namespace corvantile::tool
