#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ZVSmartModel/Exports.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/Lookup.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Progress.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

using ZVSmartFormat::CZVFTOutStream;
using ProgressCall = ZVSmartModel::Progress;
namespace fs = std::filesystem;

namespace {

struct Arguments {
    std::string file;
    Target target;
    std::optional<std::string> floor, className;
    std::vector<std::string> elements, where;
    bool salvage = false;
    bool rooms = false;
};

enum class Format { Glb, Obj };

Format FormatOf(const std::string& path) {
    if (path == "-") return Format::Glb;  // OBJ is two files
    const std::string extension = fs::path(path).extension().string();
    if (extension == ".glb" || extension == ".GLB") return Format::Glb;
    if (extension == ".obj" || extension == ".OBJ") return Format::Obj;
    throw Error(Status::Usage, path + ": the name must end in .glb or .obj");
}

/// What came of an export.
struct Outcome {
    ExportSummary summary;
    unsigned long long bytes = 0;
};

Outcome ExportGlb(const BlockFile& file, const Arguments& arguments, const ExportOptions& options,
                  const ProgressCall& progress) {
    OutputFile output(arguments.target.path, arguments.target.force, {arguments.file});
    Outcome outcome;
    output.Fill(
        [&](CZVFTOutStream& sink) { outcome.summary = WriteGlb(file, sink, options, progress); });
    output.Commit();
    outcome.bytes = output.Bytes();
    return outcome;
}

Outcome ExportObj(const BlockFile& file, const Arguments& arguments, const ExportOptions& options,
                  const ProgressCall& progress) {
    const fs::path materials = fs::path(arguments.target.path).replace_extension(".mtl");
    OutputFile objOutput(arguments.target.path, arguments.target.force, {arguments.file});
    OutputFile mtlOutput(materials.string(), arguments.target.force, {arguments.file});
    Outcome outcome;
    objOutput.Fill([&](CZVFTOutStream& obj) {
        mtlOutput.Fill([&](CZVFTOutStream& mtl) {
            outcome.summary =
                WriteObj(file, obj, mtl, materials.filename().string(), options, progress);
        });
    });
    OutputFile::CommitBoth(mtlOutput, objOutput);
    outcome.bytes = objOutput.Bytes();
    return outcome;
}

void Tell(const Outcome& outcome, const Arguments& arguments) {
    const ExportSummary& summary = outcome.summary;
    if (summary.missing != 0) {
        WriteMessage("warning: " + std::to_string(summary.missing) +
                     " geometries are referred to but not in the file");
    }
    WriteMessage(TargetName(arguments.target.path) + ": " + std::to_string(summary.elements) +
                 " components, " + std::to_string(summary.meshes) + " meshes, " +
                 std::to_string(outcome.bytes) + " bytes");
}

ExportOptions OptionsOf(const BlockFile& file, const Arguments& arguments) {
    ExportOptions options;
    options.selection.floor = arguments.floor;
    if (arguments.className) options.selection.classNames = {*arguments.className};
    for (const std::string& text : arguments.elements) {
        for (const ElementIndex index : FindElements(file, arguments.file, text)) {
            options.selection.elements.push_back(index);
        }
    }
    options.selection.properties = PropertyTests(arguments.where);
    options.selection.rooms = arguments.rooms;
    options.salvage = arguments.salvage;
    return options;
}

void Export(const Arguments& arguments, const CommonOptions& common) {
    const bool isGlb = FormatOf(arguments.target.path) == Format::Glb;
    if (isGlb && !CanWriteGlb()) {
        throw Error(Status::Usage, "this build writes no GLB (it needs tinygltf)");
    }
    const BlockFile file = OpenBlockFile(arguments.file, common);
    const ExportOptions options = OptionsOf(file, arguments);
    Progress line(common.quiet);
    const ProgressCall progress = line.Shares();
    const Outcome outcome = isGlb ? ExportGlb(file, arguments, options, progress)
                                  : ExportObj(file, arguments, options, progress);
    line.Clear();
    if (!common.quiet) Tell(outcome, arguments);
    if (!outcome.summary.lost.empty()) throw Error(Status::Damaged, outcome.summary.lost);
}

}  // namespace

void RegisterExport(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* const command = AddReadingCommand(
        app, "export",
        "Write the components' surfaces as GLB, with names, classes and properties, or as OBJ with "
        "an MTL file beside it",
        "zvg export house.zvg -o house.glb --class IfcWall", arguments->file);
    AddTargetOptions(*command, "The file to write: .glb or .obj; - is GLB on standard output",
                     arguments->target)
        ->required();
    AddFloorOption(*command, arguments->floor);
    AddClassOption(*command, arguments->className);
    command
        ->add_option("--element", arguments->elements,
                     "Only the component at this FLOOR:POS, or of this GUID or this name; may be "
                     "said more than once")
        ->allow_extra_args(false);
    AddWhereOption(*command, arguments->where);
    command->add_flag("--salvage", arguments->salvage,
                      "Of a damaged file write what is whole; the exit status is 4 all the same");
    AddLimitOption(*command, common);
    AddRoomsOption(*command, arguments->rooms);
    command->callback([arguments, &common] { Export(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
