#include "CorvantilePlay/detail/CommandLine/Manual.hpp"

#include "CorvantilePlay/detail/CommandLine/Roff.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace corvantile::tool {

namespace {

std::string signature(const OptionText& option) {
    std::string text;
    for (const auto& name : option.names) text += (text.empty() ? "" : ", ") + name;
    if (option.value.empty()) return text;
    return text.empty() ? option.value : text + " " + option.value;
}

std::string summary(const OptionText& option) {
    const auto name = option.names.empty() ? "" : option.names.back();
    const auto text = name + (name.empty() || option.value.empty() ? "" : " ") + option.value;
    return option.isRequired ? text : "[" + text + "]";
}

bool isHelp(const OptionText& option) {
    return std::find(option.names.begin(), option.names.end(), "--help") != option.names.end();
}

class Page {
public:
    Page(const CommandLineText& commandLine, std::string_view version) : commandLine_(commandLine) {
        roff_.title(commandLine.tool.name, version);
    }

    std::string make(const std::vector<Command>& commands) {
        addSynopsis();
        addSubcommands();
        addCommands(commands);
        addExitStatus();
        addReferences("ENVIRONMENT", environmentVariables());
        addReferences("FILES", files());
        return std::move(roff_).text();
    }

private:
    void addSynopsis() {
        roff_.section("NAME");
        roff_.text(commandLine_.tool.name + " - play the phone around an app that is built on Corvantile");
        roff_.section("SYNOPSIS");
        roff_.bold(commandLine_.tool.name);
        for (const auto& subcommand : commandLine_.subcommands) {
            roff_.lineBreak();
            roff_.bold(commandLine_.tool.name + " " + subcommand.name);
            for (const auto& option : subcommand.options)
                if (!isHelp(option)) roff_.text(summary(option));
        }
        roff_.section("DESCRIPTION");
        roff_.text(commandLine_.tool.help);
    }

    void addSubcommands() {
        roff_.section("OPTIONS");
        for (const auto& option : commandLine_.tool.options) addOption(option);
        roff_.section("SUBCOMMANDS");
        for (const auto& subcommand : commandLine_.subcommands) {
            roff_.subsection(commandLine_.tool.name + " " + subcommand.name);
            roff_.text(subcommand.help + ".");
            addOptions(subcommand.options);
        }
    }

    // Each subcommand has --help, which the tool's own options explain.
    void addOptions(const std::vector<OptionText>& options) {
        for (const auto& option : options)
            if (!isHelp(option)) addOption(option);
    }

    void addOption(const OptionText& option) {
        roff_.item(signature(option), option.help + (option.isRequired ? " (required)" : ""));
    }

    void addCommands(const std::vector<Command>& commands) {
        roff_.section("COMMANDS OF A PLAY");
        roff_.text(
            "These are the commands of a script, a pipe and the prompt, one a line; # begins a comment.");
        for (const auto& command : commands) {
            roff_.item(command.usage(), command.help + (command.details.empty() ? "" : "."));
            for (const auto& line : command.details) roff_.text(line);
        }
    }

    // Subcommands with the same text share it.
    void addExitStatus() {
        roff_.section("EXIT STATUS");
        std::vector<std::pair<std::string, std::string>> groups;
        for (const auto& subcommand : commandLine_.subcommands) {
            if (subcommand.footer.empty()) continue;
            const auto found = std::find_if(groups.begin(), groups.end(), [&](const auto& group) {
                return group.second == subcommand.footer;
            });
            if (found == groups.end())
                groups.emplace_back(subcommand.name, subcommand.footer);
            else
                found->first += ", " + subcommand.name;
        }
        for (const auto& [names, text] : groups) roff_.item(names, text);
    }

    void addReferences(std::string_view section, const std::vector<Reference>& references) {
        roff_.section(section);
        for (const auto& [name, text] : references) roff_.item(name, text);
    }

    const CommandLineText& commandLine_;
    Roff roff_;
};

void append(std::string& text, std::string_view title, const std::vector<Reference>& references) {
    std::vector<Cells> rows;
    rows.reserve(references.size());
    for (const auto& [name, meaning] : references)
        rows.push_back({"  " + std::string(name), std::string(meaning)});
    text.append(title).append(":\n");
    for (const auto& line : alignedLines(rows)) text += line + "\n";
}

} // namespace

const std::vector<Reference>& environmentVariables() {
    static const std::vector<Reference> variables = {
        {"CORVANTILE_ADJUST_ENDPOINT", "attribution service of an app whose description names none"},
        {"CORVANTILE_ADJUST_TOKEN", "token that this service knows its client by"},
        {"XDG_STATE_HOME", "the user's state folder (default: ~/.local/state)"},
        {"NO_COLOR", "set: no colours on a terminal"}};
    return variables;
}

const std::vector<Reference>& files() {
    static const std::vector<Reference> names = {
        {"app.json", "description of an app, in the folder of --app"},
        {"~/.local/state/corvantile/IDENTIFIER", "state of the app with this bundle identifier"},
        {"~/.local/state/corvantile/prompt_history", "lines that were typed at the prompt"},
        {"share/corvantile/SampleApp", "the sample app, under the prefix of the installation"}};
    return names;
}

std::string referenceText() {
    std::string text;
    append(text, "Environment", environmentVariables());
    append(text, "Files", files());
    return text;
}

std::string makeManual(const CommandLineText& commandLine, const std::vector<Command>& commands,
                       std::string_view version) {
    return Page(commandLine, version).make(commands);
}

} // namespace corvantile::tool
