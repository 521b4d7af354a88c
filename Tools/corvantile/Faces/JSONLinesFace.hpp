#pragma once

#include "Corvantile/Plugin/Analytic/EventValue.hpp"
#include "Tools/corvantile/Faces/Face.hpp"

#include <iosfwd>
#include <string>

namespace corvantile::tool {

// One JSON object a line: "time" in seconds, "who", "kind", "text", and "fields" if there are any. Decimal
// numbers and dates are text there, so that no digit is lost; text that is not UTF-8 is replaced.
class JSONLinesFace final : public Face {
public:
    // Borrows the stream.
    explicit JSONLinesFace(std::ostream& stream);
    ~JSONLinesFace() override;

    void show(const Happening& happening) override;
    // Nothing: programs need no invitation.
    void invite() override;
    void answered() override;

private:
    std::ostream& stream_;
};

[[nodiscard]] std::string jsonLine(const Happening& happening);
[[nodiscard]] std::string jsonText(const EventValue& value);

} // namespace corvantile::tool
