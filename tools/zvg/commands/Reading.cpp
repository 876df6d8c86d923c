#include "tools/zvg/commands/Reading.h"

CLI::App* AddReadingCommand(CLI::App& app, const std::string& name, const std::string& description,
                            const std::string& example, std::string& file) {
    CLI::App* const command = app.add_subcommand(name, description);
    command->add_option("FILE", file, "The block file; - is standard input")->required();
    command->footer("Example:\n  " + example);
    return command;
}
