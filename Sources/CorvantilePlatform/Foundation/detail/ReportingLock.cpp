#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"

#include <utility>
#include <vector>

namespace corvantile {

namespace {

struct Line {
    std::shared_ptr<Console> console;
    std::string text;
};

thread_local int holders = 0;
thread_local std::vector<Line> heldLines;

} // namespace

void printAfterLocks(const std::shared_ptr<Console>& console, std::string text) {
    if (!console) return;
    if (holders > 0)
        heldLines.push_back({console, std::move(text)});
    else
        console->print(text);
}

HeldLines::HeldLines() { ++holders; }

// Swapped first: a console may cause more lines.
HeldLines::~HeldLines() {
    if (--holders > 0 || heldLines.empty()) return;
    for (const auto& line : std::exchange(heldLines, {})) line.console->print(line.text);
}

} // namespace corvantile
