#pragma once

#include <optional>
#include <string>

namespace corvantile::tool {

// Reads lines from a descriptor without ever waiting, so that an app's main loop can run while a person
// types. The last line need not end. Borrows the descriptor.
class LineReader {
public:
    explicit LineReader(int descriptor) : descriptor_(descriptor) {}

    // Takes what has come; true when there is a line, or there will be none any more.
    bool isReady();
    // The next line without its end; nullopt when none has come, and at the end.
    std::optional<std::string> next();
    [[nodiscard]] bool isAtEnd() const { return hasEnded_ && text_.empty(); }
    // Why the lines have ended before the end of the input; 0 if they have not.
    [[nodiscard]] int error() const { return error_; }

private:
    const int descriptor_;
    std::string text_;
    bool hasEnded_ = false;
    int error_ = 0;
};

} // namespace corvantile::tool
