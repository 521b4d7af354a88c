#pragma once

#include "CorvantilePlay/detail/Output/Reporter.hpp"

#include <iosfwd>
#include <string>

namespace corvantile::tool {

// Prints the events of a play on a stream, which is borrowed. Threads: any, one at a time.
class OutputFormat {
public:
    OutputFormat() = default;
    OutputFormat(const OutputFormat&) = delete;
    OutputFormat& operator=(const OutputFormat&) = delete;
    virtual ~OutputFormat();

    virtual void show(const PlayEvent& event) = 0;
};

// One line for each event: `00:01.250  host     didBecomeActive`. A `say` begins a paragraph.
class TerminalFormat final : public OutputFormat {
public:
    // `isColoured`: the stream is a terminal.
    TerminalFormat(std::ostream& stream, bool isColoured) : stream_(stream), isColoured_(isColoured) {}
    ~TerminalFormat() override;

    void show(const PlayEvent& event) override;

private:
    std::ostream& stream_;
    const bool isColoured_;
    bool hasShown_ = false;
};

// One JSON object a line: "kind", "time" in seconds, "who", "text", and the fields of the kind.
class JSONLinesFormat final : public OutputFormat {
public:
    // Prints the line that names the format's version.
    explicit JSONLinesFormat(std::ostream& stream);
    ~JSONLinesFormat() override;

    void show(const PlayEvent& event) override;

private:
    std::ostream& stream_;
};

// The line without its end. What would move a terminal's cursor is escaped; lines after the first are
// indented.
[[nodiscard]] std::string terminalLine(const PlayEvent& event);
[[nodiscard]] std::string jsonLine(const PlayEvent& event);

} // namespace corvantile::tool
