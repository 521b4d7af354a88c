#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace corvantile::tool {

// Reads lines from a descriptor without ever waiting, so that an app's main loop can run while a person
// types. The last line need not end. Borrows the descriptor. A line that is longer than any command ends the
// lines, with the error EMSGSIZE.
class LineReader {
public:
    static constexpr std::size_t longestLine = 1024 * 1024; // bytes

    explicit LineReader(int descriptor) : descriptor_(descriptor) {}

    // Takes what has come; true when there is a line, or there will be none any more.
    bool isReady();
    // The next line without its end; nullopt when none has come, and at the end.
    std::optional<std::string> next();
    [[nodiscard]] bool isAtEnd() const { return hasEnded_ && begin_ == text_.size(); }
    // Why the lines have ended before the end of the input; 0 if they have not.
    [[nodiscard]] int error() const { return error_; }

private:
    const int descriptor_;
    void findEnd();

    std::string text_;
    std::size_t begin_ = 0;    // of the next line in `text_`
    std::size_t searched_ = 0; // no line feed stands between `begin_` and this
    bool hasLine_ = false;     // one stands there
    bool hasEnded_ = false;
    int error_ = 0;
};

} // namespace corvantile::tool
