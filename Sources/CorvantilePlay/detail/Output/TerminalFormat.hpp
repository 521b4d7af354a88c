#pragma once

#include "CorvantilePlay/detail/Output/OutputFormat.hpp"

#include <iosfwd>
#include <mutex>
#include <string>

namespace corvantile::tool {

// One line for each event: `00:01.250  host     didBecomeActive`. What is said begins a paragraph.
class TerminalFormat final : public OutputFormat {
public:
    // `isColoured`: the stream is a terminal. The stream is borrowed.
    TerminalFormat(std::ostream& stream, bool isColoured);
    ~TerminalFormat() override;

    void show(const PlayEvent& event) override;
    void showPrompt() override;
    void endPrompt() override;

private:
    std::ostream& stream_;
    const bool isColoured_;
    std::mutex mutex_;
    bool isPrompting_ = false; // the prompt stands on the last line
    bool hasShown_ = false;
};

// The line without its end. What would move a terminal's cursor is escaped; a line feed goes on below.
[[nodiscard]] std::string terminalLine(const PlayEvent& event);

} // namespace corvantile::tool
