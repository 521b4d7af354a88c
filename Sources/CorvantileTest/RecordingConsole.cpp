#include "CorvantileTest/RecordingConsole.hpp"

#include "CorvantileTest/detail/DeviceLink.hpp"

#include <cstdio>
#include <utility>

namespace corvantile {

RecordingConsole::RecordingConsole(std::shared_ptr<const DeviceLink> link, bool echo)
    : link_(std::move(link)), echo_(echo) {}

RecordingConsole::~RecordingConsole() = default;

void RecordingConsole::print(std::string_view text) {
    if (link_->isCut()) return;
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(text);
    if (echo_) std::fwrite((lines_.back() + '\n').data(), 1, text.size() + 1, stdout);
}

std::vector<std::string> RecordingConsole::lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

std::string RecordingConsole::text() const {
    std::string text;
    for (const auto& line : lines()) text.append(line).append("\n");
    return text;
}

void RecordingConsole::clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
}

} // namespace corvantile
