#include "CorvantilePlay/detail/Output/OutputFormat.hpp"

#include "CorvantilePlay/detail/Text/JSONText.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <string_view>
#include <utility>

namespace corvantile::tool {

namespace {

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

OutputFormat::~OutputFormat() = default;
TerminalFormat::~TerminalFormat() = default;
JSONLinesFormat::~JSONLinesFormat() = default;

std::string terminalLine(const PlayEvent& event) {
    auto line = timeText(event.time) + "  " + event.who;
    line.append(whoWidth - std::min(whoWidth, event.who.size()) + 2, ' ');
    return line + std::string(mark(event)) + visibleText(event.text, line.size());
}

void TerminalFormat::show(const PlayEvent& event) {
    if (std::exchange(hasShown_, true) && event.kind == "say") stream_ << '\n';
    const auto colour = isColoured_ ? colourOf(event) : "";
    stream_ << colour << terminalLine(event) << (colour.empty() ? "" : "\x1b[0m") << '\n';
    stream_.flush();
}

std::string jsonLine(const PlayEvent& event) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(event.time).count();
    nlohmann::ordered_json line{
        {"time", static_cast<double>(milliseconds) / 1000}, {"who", event.who}, {"text", event.text}};
    const auto fields = toJSON(event.fields);
    line.insert(fields.begin(), fields.end());
    return jsonLine(event.kind, line);
}

JSONLinesFormat::JSONLinesFormat(std::ostream& stream) : stream_(stream) {
    stream_ << formatLine() << std::endl;
}

void JSONLinesFormat::show(const PlayEvent& event) { stream_ << jsonLine(event) << std::endl; }

} // namespace corvantile::tool
