#include "CorvantilePlay/detail/Commands/CommandCompletion.hpp"

#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <system_error>

namespace corvantile::tool {

namespace {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        if (!part.empty()) parts.push_back(part);
    return parts;
}

Names namesOf(const CommandTable& commands) {
    Names names;
    for (const auto& command : commands.commands()) names.push_back(command.name);
    return names;
}

Names sinksOf(const AppDescription& app) {
    Names names;
    for (const auto& sink : app.sinks) names.push_back(sink.settings.name);
    return names;
}

Names servicesOf(const AppDescription& app) {
    Names names;
    for (const auto& kind : app.registry.plugIns())
        for (const auto& service : kind.offers) names.push_back(service.name);
    return names;
}

// Folders end with a slash, so that the next word goes on in them.
Names filesLike(const std::string& beginning) {
    const auto folder = beginning.substr(0, beginning.find_last_of('/') + 1);
    Names names;
    std::error_code error; // a folder that cannot be read has no files to offer
    for (std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, error), end;
         !error && entry != end; entry.increment(error))
        names.push_back(folder + entry->path().filename().string() + (entry->is_directory(error) ? "/" : ""));
    return names;
}

// The placeholder at a place among the arguments, without its marks: `SWITCH` of `[SWITCH…]`. An open one is
// the last.
std::string placeholderAt(const std::string& arguments, std::size_t place) {
    const auto placeholders = split(arguments, ' ');
    if (placeholders.empty()) return {};
    const bool isOpen = placeholders.back().find("…") != std::string::npos;
    if (place >= placeholders.size() && !isOpen) return {};
    auto placeholder = placeholders[std::min(place, placeholders.size() - 1)];
    for (const std::string mark : {"[", "]", "…"})
        if (const auto found = placeholder.find(mark); found != std::string::npos)
            placeholder.erase(found, mark.size());
    return placeholder;
}

Names argumentsFor(const std::string& placeholder, const std::string& beginning, const CommandTable& commands,
                   const AppDescription& app) {
    if (placeholder == "COMMAND") return namesOf(commands);
    if (placeholder == "FILE") return filesLike(beginning);
    if (placeholder == "SERVICE") return servicesOf(app);
    if (placeholder == "SINK") return sinksOf(app);
    if (placeholder == "SWITCH") return {"debug", "dry-run"};
    const bool isLiteral = !placeholder.empty() && placeholder.front() >= 'a' && placeholder.front() <= 'z';
    return isLiteral ? split(placeholder, '|') : Names{};
}

} // namespace

std::vector<std::string> completionsOf(std::string_view line, const CommandTable& commands,
                                       const AppDescription& app) {
    const std::string text(line);
    const auto begin = text.find_last_of(" \t") + 1;
    const auto beginning = text.substr(begin);
    const auto before = split(text.substr(0, begin), ' ');
    Names words;
    if (before.empty()) words = namesOf(commands);
    for (const auto& command : commands.commands())
        if (!before.empty() && command.name == before.front())
            words =
                argumentsFor(placeholderAt(command.arguments, before.size() - 1), beginning, commands, app);
    words.erase(std::remove_if(words.begin(), words.end(),
                               [&](const std::string& word) { return !word.starts_with(beginning); }),
                words.end());
    std::sort(words.begin(), words.end());
    return words;
}

} // namespace corvantile::tool
