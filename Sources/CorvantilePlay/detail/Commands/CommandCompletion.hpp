#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

class CommandTable;
struct AppDescription;

// The words that may stand where the last word of `line` stands, and begin as it does: commands, and for
// arguments what the command's usage names.
[[nodiscard]] std::vector<std::string> completionsOf(std::string_view line, const CommandTable& commands,
                                                     const AppDescription& app);

} // namespace corvantile::tool
