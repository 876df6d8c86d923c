#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <sstream>
#include <string>
#include <vector>

#include "ZVSmartModel/Pack.h"
#include "model/element/LackOfMemory.h"
#include "tools/zvg/Command.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/output/OutOfMemory.h"
#include "tools/zvg/output/SignalCleanup.h"
#include "tools/zvg/text/Colour.h"
#include "tools/zvg/text/Nearest.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

constexpr const char* exitStatusHelp =
    "Exit status: 0 done, 1 internal error or out of memory, or files that differ (diff), 2 wrong "
    "command line, 3 input or output failed, "
    "4 the file is damaged or not a block file, 5 not found.\n"
    "Example:\n"
    "  zvg info house.zvg --json";

std::string VersionText() {
    std::string text = "zvg " ZVG_VERSION "\nimporters:";
    const std::vector<std::string> names = ImportFormats();
    for (const std::string& name : names) text += ' ' + name;
    if (names.empty()) text += " none";
    return text + "\ncage of the importers: " + ImportCage();
}

constexpr struct {
    const char* name;
    void (*add)(CLI::App& app, CommonOptions& common);
} commands[] = {{"pack", RegisterPack},   {"info", RegisterInfo},     {"tree", RegisterTree},
                {"list", RegisterList},   {"show", RegisterShow},     {"geo", RegisterGeo},
                {"props", RegisterProps}, {"query", RegisterQuery},   {"diff", RegisterDiff},
                {"plan", RegisterPlan},   {"export", RegisterExport}, {"preview", RegisterPreview},
                {"view", RegisterView},   {"verify", RegisterVerify}};

/// Adds the command that the line begins with: making the options of all takes longer than many a
/// command runs. Adds all of them where it begins with something else.
void RegisterCommands(CLI::App& app, CommonOptions& common, const std::string& first) {
    for (const auto& command : commands) {
        if (first == command.name) return command.add(app, common);
    }
    for (const auto& command : commands) command.add(app, common);
    RegisterMan(app);
    RegisterCompletion(app);
}

void RegisterOptions(CLI::App& app, CommonOptions& common) {
    app.require_subcommand(1);
    app.fallthrough();  // so that the common options may stand behind the command's name
    app.set_version_flag("--version", VersionText, "Print the version and the importers");
    app.add_flag("-q,--quiet", common.quiet, "Print nothing but errors on standard error");
    app.add_flag("--json", common.json, "Print JSON where a command inspects a file");
    app.add_option_function<std::string>(
           "--color", ChooseColour,
           "Colour in headings and errors: auto (on a terminal, unless NO_COLOR is set), always or "
           "never")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    app.footer(exitStatusHelp);
}

std::string UnknownText(const CLI::App& app) {
    const std::string typed = app.remaining().front();
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    const std::string nearest = Nearest(typed, names);
    const std::string guess = nearest.empty() ? "" : "; did you mean " + nearest + '?';
    return "unknown command or option: " + typed + guess;
}

/// Prints the help or the version that was asked for; everything else that ends the parsing is
/// the user's mistake.
void AnswerParser(const CLI::App& app, const CLI::ParseError& end) {
    if (end.get_exit_code() != 0) {
        const bool unknownCommand = app.get_subcommands().empty() && !app.remaining().empty();
        const std::string reason = unknownCommand ? UnknownText(app) : end.what();
        throw Error(Status::Usage, reason + " (see zvg --help)");
    }
    std::ostringstream text;
    app.exit(end, text, text);
    WriteOutput(text.str());
}

/// Returns the exit status.
int Run(int argc, char** argv) {
    CommonOptions common;
    CLI::App app("Packs building models into block files and reads block files", "zvg");
    RegisterOptions(app, common);
    RegisterCommands(app, common, argc > 1 ? argv[1] : "");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& end) {
        AnswerParser(app, end);
    }
    FinishOutput();
    return common.differs ? 1 : 0;
}

int Fail(Status status, const std::string& message) {
    WriteError(message);
    return static_cast<int>(status);
}

int RunAndReport(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const Error& error) {
        return Fail(error.GetStatus(), error.what());
    } catch (const std::exception& error) {
        if (IsOutOfMemory(error)) return Fail(Status::Internal, "out of memory");
        return Fail(Status::Internal, std::string("internal error: ") + error.what());
    }
}

}  // namespace

}  // namespace ZVSmartModel::Tool

int main(int argc, char** argv) {
    using namespace ZVSmartModel::Tool;
    PrepareStandardStreams();
    EndWhenOutOfMemory([](const char* reason) {
        RemoveUnfinished();
        std::fprintf(stderr, "zvg: %s\n", reason);
    });
    return RunAndReport(argc, argv);
}
