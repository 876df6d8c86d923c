#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "model/element/BlockFileImp.h"
#include "model/element/FileSink.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/InputFiles.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/StandardOutput.h"
#include "tools/zvg/view/ViewServer.h"
#include "tools/zvg/view/ViewerPage.h"

namespace ZVSmartModel::Tool {

namespace {

struct ViewArguments {
    std::vector<std::string> files;
    Target target;
    bool serve = false;
    std::uint16_t port = 0;
};

std::string NameOf(const std::string& path) {
    return path == "-" ? "standard-input.zvg" : std::filesystem::path(path).filename().string();
}

/// Throws Error where it is no block file; what is damaged in one the page tells.
void CheckBlockFile(OpenedFile& file, const CommonOptions& common) {
    BlockFile::Imp::Open(OpenedFile(file.Stream(), file.Path()), {common.noLimit}, "");
}

void WritePage(const ViewArguments& arguments, const std::vector<std::string>& paths,
               const CommonOptions& common) {
    const ViewerPage page;
    OutputFile output(arguments.target.path, arguments.target.force, paths);
    output.Fill([&](ZVSmartFormat::CZVFTOutStream& out) {
        WriteWhole(out, page.Head());
        for (const std::string& path : paths) {
            OpenedFile file = OpenNamed(path);
            CheckBlockFile(file, common);
            file.Stream().Seek(0);
            WriteFileElement(NameOf(path), file.Stream(), out);
        }
        WriteWhole(out, page.Tail());
    });
    output.Commit();
    if (common.quiet) return;
    WriteMessage(TargetName(arguments.target.path) + ": " + std::to_string(paths.size()) +
                 (paths.size() == 1 ? " file, " : " files, ") + std::to_string(output.Bytes()) +
                 " bytes");
}

void Serve(const ViewArguments& arguments, const std::vector<std::string>& paths,
           const CommonOptions& common) {
    if (!CanServe()) {
        throw Error(Status::Usage, "this build serves no pages (it needs libmicrohttpd)");
    }
    const ViewerPage page;
    ServedFiles files;
    std::string query;
    for (const std::string& path : paths) {
        if (!std::filesystem::is_regular_file(path)) {
            throw Error(Status::Usage, InputName(path) + ": only a regular file can be served");
        }
        OpenedFile file = OpenNamed(path);
        CheckBlockFile(file, common);
        query += query.empty() ? "?src=" : "&src=";
        query += EscapedParameter(AddressOf(files.AddPath(path)));
    }
    ServeUntilSignal(page, files, arguments.port, [&query](const std::string& address) {
        WriteOutput(address + query + '\n');
        FinishOutput();
    });
}

void View(const ViewArguments& arguments, const CommonOptions& common) {
    if (arguments.serve == !arguments.target.path.empty()) {
        throw Error(Status::Usage, "either --output or --serve is wanted");
    }
    const std::vector<std::string> paths =
        arguments.files.empty() ? std::vector<std::string>() : InputFiles(arguments.files);
    if (!arguments.serve && paths.empty()) throw Error(Status::Usage, "FILE is required");
    if (arguments.serve) return Serve(arguments, paths, common);
    WritePage(arguments, paths, common);
}

}  // namespace

void RegisterView(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<ViewArguments>();
    CLI::App* const command = app.add_subcommand(
        "view",
        "Show block files in a browser: write a page that holds viewer and files and needs no "
        "server, or serve both to browsers on this machine, where models may be dropped on the "
        "page to be packed. Whoever has an account on this machine can read what is served");
    command->add_option("FILE", arguments->files,
                        "The block files, and folders that are searched for *.zvg; none need be "
                        "given with --serve");
    AddTargetOptions(*command, "The page to write; - is standard output", arguments->target);
    command->add_flag("--serve", arguments->serve,
                      "Serve at 127.0.0.1 until interrupted; the address is printed");
    command->add_option("--port", arguments->port, "The port to serve at (default: a free one)");
    command->footer(
        "Example:\n  zvg view house.zvg -o house.html\n  zvg view house.zvg --serve --port 8080");
    command->callback([arguments, &common] { View(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
