#include "tools/zvg/commands/Options.h"

namespace ZVSmartModel::Tool {

CLI::App* AddReadingCommand(CLI::App& app, const std::string& name, const std::string& description,
                            const std::string& example, std::string& file) {
    CLI::App* const command = app.add_subcommand(name, description);
    command->add_option("FILE", file, "The block file; - is standard input")->required();
    command->footer("Example:\n  " + example);
    return command;
}

void AddLimitOption(CLI::App& command, CommonOptions& common) {
    command.add_flag("--no-limit", common.noLimit,
                     "Take what work and memory the file asks for, however small it is");
}

void AddFloorOption(CLI::App& command, std::optional<std::string>& floor) {
    command.add_option("--floor", floor, "Only this floor, by its number or its name");
}

void AddClassOption(CLI::App& command, std::optional<std::string>& className) {
    command.add_option("--class", className,
                       "Only components with a class of this name, on any level");
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
