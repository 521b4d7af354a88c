#pragma once

#include "CorvantilePlay/detail/Output/Face.hpp"

#include <iosfwd>
#include <string>

namespace corvantile::tool {

// One JSON object a line: "kind", "time" in seconds, "who", "text", and the fields of the kind.
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

} // namespace corvantile::tool
