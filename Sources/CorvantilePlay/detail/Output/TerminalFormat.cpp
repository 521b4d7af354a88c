#include "CorvantilePlay/detail/Output/TerminalFormat.hpp"

#include "CorvantilePlay/detail/Text/VisibleText.hpp"

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <string_view>
#include <utility>

namespace corvantile::tool {

namespace {

constexpr std::string_view prompt = "corvantile> ";
constexpr std::size_t whoWidth = 7;

std::string timeText(std::chrono::nanoseconds time) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
    char text[32];
    std::snprintf(text, sizeof text, "%02lld:%02lld.%03lld", static_cast<long long>(milliseconds / 60000),
                  static_cast<long long>(milliseconds / 1000 % 60),
                  static_cast<long long>(milliseconds % 1000));
    return text;
}

std::string_view mark(const PlayEvent& event) {
    if (event.kind == "error") return "error: ";
    return event.kind == "command" ? "> " : "";
}

std::string_view colourOf(const PlayEvent& event) {
    if (event.kind == "error") return "\x1b[31m";
    if (event.kind == "command") return "\x1b[1m";
    if (event.kind == "say") return "\x1b[36m";
    if (event.who == "sink") return "\x1b[32m";
    if (event.who == "console") return "\x1b[2m";
    return "";
}

} // namespace

std::string terminalLine(const PlayEvent& event) {
    auto line = timeText(event.time) + "  " + event.who;
    line.append(whoWidth - std::min(whoWidth, event.who.size()) + 2, ' ');
    return line + std::string(mark(event)) + visibleText(event.text, line.size());
}

TerminalFormat::TerminalFormat(std::ostream& stream, bool isColoured)
    : stream_(stream), isColoured_(isColoured) {}

TerminalFormat::~TerminalFormat() = default;

void TerminalFormat::show(const PlayEvent& event) {
    const std::lock_guard lock(mutex_);
    if (isPrompting_) stream_ << "\r\x1b[K";
    if (std::exchange(hasShown_, true) && event.kind == "say") stream_ << '\n';
    const auto colour = isColoured_ ? colourOf(event) : "";
    stream_ << colour << terminalLine(event) << (colour.empty() ? "" : "\x1b[0m") << '\n';
    if (isPrompting_) stream_ << prompt;
    stream_.flush();
}

void TerminalFormat::showPrompt() {
    const std::lock_guard lock(mutex_);
    isPrompting_ = true;
    stream_ << prompt << std::flush;
}

void TerminalFormat::endPrompt() {
    const std::lock_guard lock(mutex_);
    isPrompting_ = false;
}

} // namespace corvantile::tool
