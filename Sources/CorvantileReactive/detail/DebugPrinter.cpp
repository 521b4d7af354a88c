#include "CorvantileReactive/detail/DebugPrinter.hpp"

#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/detail/CalendarText.hpp"
#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"
#include "CorvantilePlatform/Platform.hpp"

#include <cstddef>
#include <utility>
#include <vector>

namespace corvantile::rx {

std::string debugLabel(std::string_view file, int line, std::string_view function) {
    std::string label(file.substr(file.find_last_of('/') + 1));
    label.append(":").append(std::to_string(line)).append(" (").append(function).append(")");
    return label;
}

namespace detail {

namespace {

// Counts user-perceived characters, and cuts between them.
std::string trimmed(std::string text) {
    constexpr std::size_t longest = 40;
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at < text.size(); at += firstCharacterLength(std::string_view(text).substr(at)))
        starts.push_back(at);
    if (starts.size() <= longest) return text;
    return text.substr(0, starts[longest / 2]) + "..." + text.substr(starts[starts.size() - longest / 2]);
}

} // namespace

DebugPrinter::DebugPrinter(std::string label, bool trimOutput)
    : label_(std::move(label)), trimOutput_(trimOutput) {}

// A plug-in that outlives its platform disposes its chains when there is no console any more.
void DebugPrinter::print(std::string_view content) const {
    if (!Platform::isInstalled()) return;
    const auto& ports = Platform::current().ports();
    const auto now = ports.clock->deviceNow();
    auto line = timestamp(now, ports.clock->localOffset(now)) + ": " + label_ + " -> ";
    ports.console->print(line.append(content));
}

void DebugPrinter::printEvent(std::string event) const {
    print("Event " + (trimOutput_ ? trimmed(std::move(event)) : event));
}

} // namespace detail

} // namespace corvantile::rx
