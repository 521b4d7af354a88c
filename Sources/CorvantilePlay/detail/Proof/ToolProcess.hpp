#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace corvantile::tool {

// How a process of the tool has ended.
struct ProcessEnd {
    pid_t process = -1;
    bool wasKilled = false;        // by SIGKILL
    std::optional<int> exitCode{}; // none when a signal ended it
};

// Runs the tool itself with these arguments, what it prints going to `output`. A UsageError when it cannot.
[[nodiscard]] pid_t startTool(const std::vector<std::string>& arguments, const std::filesystem::path& output);

// Waits for the end of any process that was started so; there is one.
[[nodiscard]] ProcessEnd awaitTool();

} // namespace corvantile::tool
