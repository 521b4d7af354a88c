#pragma once

#include <string>
#include <string_view>

namespace corvantile::tool {

struct ServiceAnswer {
    int status;
    std::string body; // JSON
};

// What the services say when all goes well; 404 for a path that is none of theirs.
[[nodiscard]] ServiceAnswer answerTo(std::string_view path);

} // namespace corvantile::tool
