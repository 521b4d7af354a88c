#include "CorvantilePlay/detail/CommandLine/CommandLineText.hpp"

#include <CLI/CLI.hpp>

namespace corvantile::tool {

namespace {

OptionText optionText(const CLI::Option& option) {
    OptionText text{.help = option.get_description(), .isRequired = option.get_required()};
    for (const auto& name : option.get_snames()) text.names.push_back("-" + name);
    for (const auto& name : option.get_lnames()) text.names.push_back("--" + name);
    if (option.get_items_expected_max() > 0) text.value = option.get_type_name();
    if (option.get_items_expected_max() > 1) text.value += "…";
    return text;
}

SubcommandText describeSubcommand(const CLI::App& app) {
    SubcommandText text{.name = app.get_name(), .help = app.get_description(), .footer = app.get_footer()};
    for (const auto* const option : app.get_options())
        if (!option->get_group().empty()) text.options.push_back(optionText(*option));
    return text;
}

} // namespace

CommandLineText describeCommandLine(const CLI::App& app) {
    CommandLineText text{.tool = describeSubcommand(app)};
    for (const auto* const subcommand : app.get_subcommands(nullptr))
        if (!subcommand->get_group().empty()) text.subcommands.push_back(describeSubcommand(*subcommand));
    return text;
}

} // namespace corvantile::tool
