#include "CorvantilePlay/detail/Commands/Engine.hpp"

#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

namespace corvantile::tool {

namespace {

std::string_view trimmed(std::string_view line) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = std::min(line.find_first_not_of(blanks), line.size());
    return line.substr(first, line.find_last_not_of(blanks) + 1 - first);
}

std::string textOf(Arguments words) {
    std::string text;
    for (const auto& word : words) text.append(text.empty() ? "" : " ").append(word.text);
    return text;
}

} // namespace

Engine::Engine(AppDescription app, HostOptions options, Reporter::Listener listener)
    : reporter_(std::move(listener)), host_(std::move(app), std::move(options), reporter_) {
    commands_.add(lifeCycleCommands(host_));
    commands_.add(trackingCommands(host_));
    commands_.add(storageCommands(host_));
    commands_.add(attributionCommands(host_));
    commands_.add(purchaseCommands(host_));
    commands_.add(storeCommands(host_));
    commands_.add(storeViewCommands(host_));
    commands_.add(deviceCommands(host_));
    commands_.add(serverCommands(host_));
    commands_.add(inspectionCommands(host_));
    commands_.add(conversation());
}

bool Engine::play(std::string_view line, const Origin& origin) {
    try {
        run(line, origin);
        return true;
    } catch (const UsageError& error) {
        const auto place = origin.place.empty() ? "" : origin.place + ": ";
        reporter_.report("host", "error", place + error.what(),
                         {{"error", error.what()}, {"place", origin.place}});
        return false;
    }
}

void Engine::run(std::string_view line, const Origin& origin) {
    const auto words = splitWords(line);
    if (words.empty()) return;
    const auto& command = commands_.find(words.front().text);
    const auto given = Arguments(words).subspan(1);
    if (command.isEchoed) reporter_.report(origin.who, "command", std::string(trimmed(line)));
    command.checkCount(given);
    origin_ = origin;
    command.run(given);
    host_.settle();
    if (command.reachesFar) host_.runUntilIdle();
}

void Engine::runLoop(const std::function<bool()>& done) {
    host_.runLoop(done, std::chrono::nanoseconds::max());
}

std::vector<Command> Engine::conversation() {
    return {
        {"say",
         "TEXT…",
         "say something to whoever watches",
         [this](Arguments given) { reporter_.report(origin_.who, "say", textOf(given)); },
         {},
         false},
        {"help", "[COMMAND]", "list the commands, or explain one", [this](Arguments given) { help(given); }},
        {"quit", "", "end the play", [this](Arguments) { isOver_ = true; }},
    };
}

void Engine::help(Arguments given) {
    if (given.empty()) return helpWithAll();
    const auto& command = commands_.find(given[0].text);
    helpWith(command, 0);
    for (const auto& line : command.details) reporter_.report("host", "help", line);
}

void Engine::helpWithAll() {
    std::size_t width = 0;
    for (const auto& command : commands_.commands()) width = std::max(width, widthOf(command.usage()));
    for (const auto& command : commands_.commands()) helpWith(command, width);
}

void Engine::helpWith(const Command& command, std::size_t width) {
    auto usage = command.usage();
    usage.append(width - std::min(width, widthOf(usage)), ' ');
    reporter_.report("host", "help", usage + "  " + command.help,
                     {{"command", command.name}, {"arguments", command.arguments}, {"help", command.help}});
}

} // namespace corvantile::tool
