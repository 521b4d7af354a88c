#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <string>
#include <string_view>

namespace corvantile {

// The process's debug console. Threads: any; lines never interleave. Errors: a console that cannot be
// written to is silent.
class CORVANTILE_API Console : NonCopyable {
public:
    virtual ~Console();

    // The text as it is, and a line feed.
    virtual void print(std::string_view text) = 0;

    // The text in its debug form (debugText), and a line feed.
    void debugPrint(std::string_view text);
};

// The text in double quotes, with quotes, backslashes and control characters escaped.
[[nodiscard]] CORVANTILE_API std::string debugText(std::string_view text);

} // namespace corvantile
