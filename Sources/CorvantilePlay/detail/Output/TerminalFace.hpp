#pragma once

#include "CorvantilePlay/detail/Output/Face.hpp"

#include <iosfwd>
#include <mutex>
#include <string>

namespace corvantile::tool {

// One line for each happening: `00:01.250  host     didBecomeActive`. What is said begins a paragraph.
class TerminalFace final : public Face {
public:
    // `isColoured`: the stream is a terminal. The stream is borrowed.
    TerminalFace(std::ostream& stream, bool isColoured);
    ~TerminalFace() override;

    void show(const Happening& happening) override;
    void invite() override;
    void answered() override;

private:
    std::ostream& stream_;
    const bool isColoured_;
    std::mutex mutex_;
    bool isInviting_ = false; // the prompt stands on the last line
    bool hasShown_ = false;
};

// The line without its end. What would move a terminal's cursor is escaped; a line feed goes on below.
[[nodiscard]] std::string terminalLine(const Happening& happening);

} // namespace corvantile::tool
