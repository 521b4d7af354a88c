#include "CorvantilePlay/detail/CommandLine/Completion.hpp"

#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <algorithm>
#include <utility>
#include <vector>

namespace corvantile::tool {

namespace {

bool isFolder(const OptionText& option) { return option.value == "FOLDER"; }
bool isFile(const OptionText& option) { return option.value.starts_with("FILE"); }

const OptionText* positionalOf(const SubcommandText& command) {
    const auto found = std::find_if(command.options.begin(), command.options.end(),
                                    [](const OptionText& option) { return option.names.empty(); });
    return found == command.options.end() ? nullptr : &*found;
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// bash

std::string optionNames(const SubcommandText& command) {
    std::string names;
    for (const auto& option : command.options)
        for (const auto& name : option.names) names += " " + name;
    return names;
}

// The reply to a word that stands for such a value.
std::string bashValues(const OptionText& option) {
    const char* const kind = isFolder(option) ? "-d" : isFile(option) ? "-f" : nullptr;
    return kind ? std::string("_corvantile_paths ") + kind : "COMPREPLY=()";
}

std::string bashCommand(const SubcommandText& command) {
    std::string values;
    for (const auto& option : command.options) {
        if (option.names.empty() || option.value.empty()) continue;
        std::string names;
        for (const auto& name : option.names) names += (names.empty() ? "" : "|") + name;
        values += "            " + names + ") " + bashValues(option) + "; return ;;\n";
    }
    auto script = "    " + command.name + ")\n";
    if (!values.empty()) script += "        case $previous in\n" + values + "        esac\n";
    const auto words = "_corvantile_words '" + optionNames(command) + "'";
    const auto* const positional = positionalOf(command);
    if (!positional) return script + "        " + words + " ;;\n";
    return script + "        if [[ $word == -* ]]; then " + words + "; else " + bashValues(*positional) +
           "; fi ;;\n";
}

std::string bash(const CommandLineText& commandLine) {
    auto names = optionNames(commandLine.tool);
    std::string cases;
    for (const auto& command : commandLine.subcommands) {
        names += " " + command.name;
        cases += bashCommand(command);
    }
    return R"(# Completion of corvantile for bash.
_corvantile_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word"); }
_corvantile_paths() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen "$1" -- "$word")
}

_corvantile() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command='' i
    # `--option=value` are three words.
    if [[ $word == '=' ]]; then
        word=''
    elif [[ $previous == '=' ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        [[ ${COMP_WORDS[i]} == -* ]] || { command=${COMP_WORDS[i]}; break; }
    done
    case $command in
    '') _corvantile_words ')" +
           names + "' ;;\n" + cases + R"(    *) COMPREPLY=() ;;
    esac
}
complete -F _corvantile corvantile
)";
}

// zsh

constexpr const char* zshNextLine = " \\\n            ";

std::string zshQuoted(const std::string& text) { return "'" + replaced(text, "'", R"('\'')") + "'"; }

// With a backslash before each character that means something where the text stands.
std::string zshEscaped(std::string text, std::string_view special) {
    text = replaced(std::move(text), "\\", R"(\\)");
    for (const char character : special)
        text = replaced(std::move(text), std::string(1, character), std::string("\\") + character);
    return text;
}

std::string zshValues(const OptionText& option) {
    const char* const action = isFolder(option) ? "_files -/" : isFile(option) ? "_files" : " ";
    return ":" + option.value + ":" + action;
}

std::string zshArguments(const SubcommandText& command) {
    std::string arguments;
    for (const auto& option : command.options) {
        const auto values = option.value.empty() ? "" : zshValues(option);
        if (option.names.empty()) arguments += zshNextLine + zshQuoted("*" + values);
        for (const auto& name : option.names)
            arguments += zshNextLine + zshQuoted(name + "[" + zshEscaped(option.help, "[]:") + "]" + values);
    }
    return arguments;
}

std::string zsh(const CommandLineText& commandLine) {
    std::string names;
    std::string cases;
    for (const auto& command : commandLine.subcommands) {
        names += zshNextLine + zshQuoted(command.name + ":" + zshEscaped(command.help, ":"));
        cases += "        " + command.name + ") _arguments" + zshArguments(command) + " ;;\n";
    }
    return R"(#compdef corvantile
# Completion of corvantile for zsh.
_corvantile() {
    local context state state_descr line
    typeset -A opt_args
    _arguments -C)" +
           zshArguments(commandLine.tool) + R"( '1:command:->command' '*::argument:->argument'
    case $state in
    command)
        local -a commands
        commands=()" +
           names + R"()
        _describe command commands ;;
    argument)
        case $words[1] in
)" + cases +
           R"(        esac ;;
    esac
}
_corvantile "$@"
)";
}

// fish

std::string fishQuoted(const std::string& text) {
    return "'" + replaced(replaced(text, "\\", R"(\\)"), "'", R"(\')") + "'";
}

std::string fishOptions(const SubcommandText& command, const std::string& condition) {
    std::string script;
    for (const auto& option : command.options) {
        script += "complete -c corvantile -n " + fishQuoted(condition);
        for (const auto& name : option.names)
            script += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
        if (!option.value.empty() && !option.names.empty())
            script += isFile(option) ? " -r" : " -x"; // -x: no file as its value
        if (isFolder(option)) script += " -a '(__fish_complete_directories)'";
        if (isFile(option)) script += " -F";
        script += " -d " + fishQuoted(option.help) + "\n";
    }
    return script;
}

std::string fish(const CommandLineText& commandLine) {
    const std::string none = "__fish_use_subcommand";
    auto script = "# Completion of corvantile for fish.\ncomplete -c corvantile -f\n" +
                  fishOptions(commandLine.tool, none);
    for (const auto& command : commandLine.subcommands) {
        script += "complete -c corvantile -n " + none + " -a " + command.name + " -d " +
                  fishQuoted(command.help) + "\n";
        script += fishOptions(command, "__fish_seen_subcommand_from " + command.name);
    }
    return script;
}

} // namespace

std::string makeCompletion(const CommandLineText& commandLine, std::string_view shell) {
    if (shell == "bash") return bash(commandLine);
    if (shell == "zsh") return zsh(commandLine);
    if (shell == "fish") return fish(commandLine);
    throw UsageError(unknownName("shell", shell, {"bash", "zsh", "fish"}));
}

} // namespace corvantile::tool
