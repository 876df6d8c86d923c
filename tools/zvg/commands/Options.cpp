#include "tools/zvg/commands/Options.h"

namespace ZVSmartModel::Tool {

CLI::App* AddReadingCommand(CLI::App& app, const std::string& name, const std::string& description,
                            const std::string& example, std::string& file) {
    CLI::App* const command = app.add_subcommand(name, description);
    command->add_option("FILE", file, "The block file; - is standard input")->required();
    command->footer("Example:\n  " + example);
    return command;
}

CLI::App* AddReadingCommand(CLI::App& app, const std::string& name, const std::string& description,
                            const std::string& example, std::vector<std::string>& files) {
    CLI::App* const command = app.add_subcommand(name, description);
    command
        ->add_option("FILE", files,
                     "The block files, and folders that are searched for *.zvg; - is standard "
                     "input. Of several, lines begin with the file's name")
        ->required();
    command->footer("Example:\n  " + example);
    return command;
}

void AddLimitOption(CLI::App& command, CommonOptions& common) {
    command.add_flag("--no-limit", common.noLimit,
                     "Take what work and memory the file asks for, however small it is");
}

void AddThreadsOption(CLI::App& command, unsigned int& threads) {
    constexpr unsigned int most = 64;
    command
        .add_option("--threads", threads,
                    "How many threads work at once (default: one for each processor)")
        ->check(CLI::Range(1U, most));
}

void AddFloorOption(CLI::App& command, std::optional<std::string>& floor) {
    command.add_option("--floor", floor, "Only this floor, by its number or its name");
}

void AddClassOption(CLI::App& command, std::optional<std::string>& className) {
    command.add_option("--class", className,
                       "Only components with a class of this name, on any level");
}

void AddWhereOption(CLI::App& command, std::vector<std::string>& where) {
    command
        .add_option("--where", where,
                    "Only components with this property, as NAME=VALUE or SET.NAME=VALUE; more "
                    "than one must all hold")
        ->allow_extra_args(false);
}

std::vector<PropertyTest> PropertyTests(const std::vector<std::string>& where) {
    std::vector<PropertyTest> tests;
    for (const std::string& said : where) {
        const std::size_t equals = said.find('=');
        if (equals == 0 || equals == std::string::npos) {
            throw Error(Status::Usage, "'" + said + "' is no NAME=VALUE");
        }
        tests.push_back({said.substr(0, equals), said.substr(equals + 1)});
    }
    return tests;
}

void AddRoomsOption(CLI::App& command, bool& rooms) {
    command.add_flag("--rooms", rooms,
                     "Show the bodies of rooms as well, which hide what is in them");
}

CLI::Option* AddTargetOptions(CLI::App& command, const std::string& what, Target& target) {
    CLI::Option* const output = command.add_option("-o,--output", target.path, what);
    command.add_flag("--force", target.force, "Replace what exists under that name");
    return output;
}

}  // namespace ZVSmartModel::Tool
