#include "tools/zvg/help/CommandLine.h"

namespace ZVSmartModel::Tool {

namespace {

OptionHelp HelpOfOption(const CLI::Option& option) {
    OptionHelp help;
    for (const std::string& name : option.get_snames()) help.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) help.names.push_back("--" + name);
    if (help.names.empty()) help.argument = option.get_name(true);
    help.takesValue = option.get_expected_max() != 0;
    help.required = option.get_required();
    help.description = option.get_description();
    return help;
}

CommandHelp OwnHelp(const CLI::App& app) {
    CommandHelp help;
    help.name = app.get_name();
    help.description = app.get_description();
    help.footer = app.get_footer();
    for (const CLI::Option* option : app.get_options())
        help.options.push_back(HelpOfOption(*option));
    return help;
}

}  // namespace

CommandHelp HelpOf(const CLI::App& app) {
    CommandHelp help = OwnHelp(app);
    const auto all = [](const CLI::App*) { return true; };
    for (const CLI::App* command : app.get_subcommands(all))
        help.commands.push_back(OwnHelp(*command));
    return help;
}

}  // namespace ZVSmartModel::Tool
