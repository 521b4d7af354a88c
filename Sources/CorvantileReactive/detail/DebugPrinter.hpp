#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>
#include <string_view>

namespace corvantile::rx::detail {

// Writes the lines of one `debug` operator on the console of the installed platform. Threads: any.
class CORVANTILE_API DebugPrinter {
public:
    DebugPrinter(std::string label, bool trimOutput);

    void print(std::string_view content) const;
    void printEvent(std::string event) const;

private:
    std::string label_;
    bool trimOutput_;
};

} // namespace corvantile::rx::detail
