#include <memory>
#include <string>

#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/help/Completion.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

void RegisterCompletion(CLI::App& app) {
    const auto shell = std::make_shared<std::string>();
    CLI::App* const command =
        app.add_subcommand("completion", "Print a completion script for a shell");
    command->add_option("shell", *shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    command->footer("Example:\n  source <(zvg completion bash)");
    command->callback([shell, &app] {
        const CommandHelp help = HelpOf(app);
        WriteOutput(*shell == "bash"  ? BashCompletion(help)
                    : *shell == "zsh" ? ZshCompletion(help)
                                      : FishCompletion(help));
    });
}

}  // namespace ZVSmartModel::Tool
