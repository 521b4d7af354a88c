#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>
#include <string_view>

namespace corvantile::rx {

// `FILE:LINE (FUNCTION)`: the file without its folders, with its extension.
[[nodiscard]] CORVANTILE_API std::string debugLabel(std::string_view file, int line,
                                                    std::string_view function);

namespace detail {

// Prints the lines of one `debug` operator on the console of the installed platform. Threads: any.
class CORVANTILE_API DebugPrinter {
public:
    DebugPrinter(std::string label, bool trimOutput);

    void print(std::string_view content) const;
    void printEvent(std::string event) const;

private:
    std::string label_;
    bool trimOutput_;
};

} // namespace detail

} // namespace corvantile::rx
