#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

// The prompt on a terminal: one edited line at a time, with a history and completion. The terminal is the one
// of standard input and output.
// Threads: `read` on the main thread, `printAround` on any.
class LineEditor {
public:
    struct Options {
        std::string prompt;
        std::filesystem::path history; // empty: the history ends with this object
        // The words that may stand where the last word of the line stands, and begin as it does.
        std::function<std::vector<std::string>(std::string_view line)> complete;
        // Runs the app's main loop until `done` holds, or the program has to end.
        std::function<void(const std::function<bool()>& done)> runLoop;
    };

    explicit LineEditor(Options options);
    ~LineEditor();

    // A line without its end; nullopt at the end of the input, or when the program has to end. An interrupt
    // key clears the line; on an empty line it raises SIGINT.
    [[nodiscard]] std::optional<std::string> read();

    // Calls `print`, with the prompt and a half-typed line out of its way.
    void printAround(const std::function<void()>& print);

private:
    class Editor;
    const std::unique_ptr<Editor> editor_;
};

} // namespace corvantile::tool
