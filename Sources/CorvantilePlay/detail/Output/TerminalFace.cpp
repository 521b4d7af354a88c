#include "CorvantilePlay/detail/Output/TerminalFace.hpp"

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

std::string_view mark(const Happening& happening) {
    if (happening.kind == "error") return "error: ";
    return happening.kind == "command" ? "> " : "";
}

std::string_view colourOf(const Happening& happening) {
    if (happening.kind == "error") return "\x1b[31m";
    if (happening.kind == "command") return "\x1b[1m";
    if (happening.kind == "say") return "\x1b[36m";
    if (happening.who == "sink") return "\x1b[32m";
    if (happening.who == "console") return "\x1b[2m";
    return "";
}

} // namespace

std::string terminalLine(const Happening& happening) {
    auto line = timeText(happening.time) + "  " + happening.who;
    line.append(whoWidth - std::min(whoWidth, happening.who.size()) + 2, ' ');
    return line + std::string(mark(happening)) + visibleText(happening.text, line.size());
}

TerminalFace::TerminalFace(std::ostream& stream, bool isColoured)
    : stream_(stream), isColoured_(isColoured) {}

TerminalFace::~TerminalFace() = default;

void TerminalFace::show(const Happening& happening) {
    const std::lock_guard lock(mutex_);
    if (isInviting_) stream_ << "\r\x1b[K";
    if (std::exchange(hasShown_, true) && happening.kind == "say") stream_ << '\n';
    const auto colour = isColoured_ ? colourOf(happening) : "";
    stream_ << colour << terminalLine(happening) << (colour.empty() ? "" : "\x1b[0m") << '\n';
    if (isInviting_) stream_ << prompt;
    stream_.flush();
}

void TerminalFace::invite() {
    const std::lock_guard lock(mutex_);
    isInviting_ = true;
    stream_ << prompt << std::flush;
}

void TerminalFace::answered() {
    const std::lock_guard lock(mutex_);
    isInviting_ = false;
}

} // namespace corvantile::tool
