#pragma once

#include "CorvantilePlay/detail/Output/OutputFormat.hpp"

#include <iosfwd>
#include <string>

namespace corvantile::tool {

// One JSON object a line: "kind", "time" in seconds, "who", "text", and the fields of the kind.
class JSONLinesFormat final : public OutputFormat {
public:
    // Borrows the stream.
    explicit JSONLinesFormat(std::ostream& stream);
    ~JSONLinesFormat() override;

    void show(const PlayEvent& event) override;
    // Nothing: programs need no invitation.
    void showPrompt() override;
    void endPrompt() override;

private:
    std::ostream& stream_;
};

[[nodiscard]] std::string jsonLine(const PlayEvent& event);

} // namespace corvantile::tool
