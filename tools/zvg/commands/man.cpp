#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/help/Manual.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

void RegisterMan(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("man", "Print the manual page zvg(1)");
    command->footer("Example:\n  zvg man | man -l -");
    command->callback([&app] { WriteOutput(ManualPage(HelpOf(app), ZVG_VERSION)); });
}

}  // namespace ZVSmartModel::Tool
